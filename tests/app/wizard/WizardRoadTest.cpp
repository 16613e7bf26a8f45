// From a stick or an image with lost photos to the restored files, by the window's controls.
#include "app/popups/Messages.h"
#include "app/popups/PopUpWnd.h"
#include "app/preview/PreviewWnd.h"
#include "tests/app/wizard/WizardFixture.h"
#include "tests/support/FailingReader.h"
#include "tests/support/Pictures.h"
#include "ui/controls/ButtonUI.h"
#include "ui/controls/ComboUI.h"
#include "ui/controls/EditUI.h"
#include "ui/controls/RichEditUI.h"
#include "ui/list/GridUI.h"

#include <QAccessible>
#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <bit>

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t MiB = 1 << 20;

class WizardRoadTest : public WizardTest
{
protected:
    void SetUp() override
    {
        if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
            GTEST_SKIP() << missing;
        }
    }

    // A card whose photos were deleted.
    void FillCard(const fs::path& path)
    {
        const FatCard card(
            path, {.fatBits = 16, .volumeBytes = 16 * MiB, .sectorsPerCluster = 4, .extra = {}});
        for (int i = 0; i < 3; ++i) {
            m_photos.push_back(MakeJpeg(64, 64, static_cast<std::uint64_t>(i)));
            card.Put("photo" + std::to_string(i) + ".jpg", m_photos.back());
        }
        card.Put("sound.mp3", ByteVector(3000, 0x55));
        for (const char* name : {"photo0.jpg", "photo1.jpg", "photo2.jpg", "sound.mp3"}) {
            card.Delete(name);
        }
    }
    void LoadImage()
    {
        FillCard(m_folder / "card.img");
        Open();
        m_dialogs.image = m_folder / "card.img";
        Click("BtnRecoverMode");
        Click("BtnLoadImage");
        Disks().SelectItem(Disks().GetCount() - 1);
    }
    void ScanUntilResults()
    {
        Click("BtnScan");
        ASSERT_TRUE(WaitFor([this] { return Page() == 3; }));
    }
    CTreeNodeUI& Jpg() const { return *Node("NodePhoto").GetItemAt(0); }
    // All restored files with these bytes, however they are named.
    std::vector<ByteVector> Restored() const
    {
        std::vector<ByteVector> files;
        for (const auto& entry : fs::recursive_directory_iterator(m_folder / "out")) {
            if (entry.is_regular_file()) {
                files.push_back(ReadFileBytes(entry.path()));
            }
        }
        return files;
    }
    // Presses a button of whatever popup opens, again and again.
    void PressInPopups(const char* name)
    {
        auto* presser = new QTimer(m_window);
        QObject::connect(presser, &QTimer::timeout, m_window, [name] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                auto* popup = dynamic_cast<CPopUpWnd*>(widget);
                if (popup == nullptr || !popup->isVisible()) {
                    continue;
                }
                if (CControlUI* button = popup->FindControl(QLatin1String(name));
                    button != nullptr && button->IsVisible() && button->IsEnabled()) {
                    popup->SendNotify(*button, NotifyClick);
                }
            }
        });
        presser->start(20);
    }

    std::vector<ByteVector> m_photos;
};

TEST_F(WizardRoadTest, PhotosAreShownAsAGridWithRowsAndTicksOfTheList)
{
    LoadImage();
    ScanUntilResults();
    auto& grid = Get<CGridUI>("FileGrid");
    auto& option = Get<COptionUI>("OptGrid");
    EXPECT_FALSE(grid.IsVisible());
    auto& pane = Get<CRichEditUI>("PreviewEdit");
    ASSERT_TRUE(WaitFor([&] { return pane.HasPicture() && !CPopUpWnd::IsAnyModal(); }));
    option.Selected(true);
    EXPECT_FALSE(Files().IsVisible());
    const auto sides = [&grid] {
        int sum = 0;
        for (const CListUI::Row* row : grid.ShownRows()) {
            const QImage* const picture = grid.picture(*row);
            sum += picture != nullptr ? picture->width() : 0;
        }
        return sum;
    };
    EXPECT_TRUE(WaitFor([&] { return sides() == 3 * 64; })) << sides();
    Shoot("page3-grid");

    pane.Clear();
    QTest::keyClick(&grid, Qt::Key_Right);
    EXPECT_EQ(Files().GetCurSel(), 1);
    QTest::keyClick(&grid, Qt::Key_Space);
    EXPECT_TRUE(Files().GetItemAt(1)->IsChecked());
    QAccessibleInterface* const cell =
        QAccessible::queryAccessibleInterface(&grid)->tableInterface()->cellAt(1, 0);
    EXPECT_EQ(cell->text(QAccessible::Name), Files().GetItemAt(1)->GetColumnText(1));
    EXPECT_TRUE(cell->state().checkable && cell->state().checked);
    const QRect last = grid.visualRect(grid.model()->index(2, grid.modelColumn()));
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, last.topLeft() + QPoint(15, 15));
    EXPECT_EQ(m_window->State().selection.size(), 2u);
    EXPECT_EQ(Files().GetCurSel(), 1) << "a tick selects nothing";
    EXPECT_FALSE(pane.HasPicture());
    EXPECT_TRUE(WaitFor([&] { return pane.HasPicture() && !CPopUpWnd::IsAnyModal(); }));

    auto& tree = Get<CTreeViewUI>("TypeTree");
    tree.SelectNode(Node("NodeAudio").GetItemAt(0));
    EXPECT_FALSE(grid.IsVisible() || option.IsVisible()) << "sound has no pictures";
    tree.SelectNode(&Jpg());
    EXPECT_TRUE(grid.IsVisible());
    EXPECT_EQ(sides(), 3 * 64) << "they were kept";
    m_window->HandleMessage(WM_SEARCH_DONE, 0, 0);
    EXPECT_EQ(sides(), 0) << "other files may stand in their places now";
}

TEST_F(WizardRoadTest, FromAnImageToTheRestoredFiles)
{
    LoadImage();
    ScanUntilResults();
    ASSERT_GE(Node("NodePhoto").GetCount(), 1);
    EXPECT_TRUE(Get("TabRecover").IsEnabled());
    EXPECT_EQ(Files().GetCount(), 3);

    // The first one is shown by itself.
    auto& pane = Get<CRichEditUI>("PreviewEdit");
    ASSERT_TRUE(WaitFor([&pane] { return pane.HasPicture() && !CPopUpWnd::IsAnyModal(); }));
    Shoot("page3-preview");

    Jpg().GetCheckBox().Selected(true);
    EXPECT_EQ(m_window->State().selection.size(), 3u);
    fs::create_directory(m_folder / "out");
    m_dialogs.folder = fs::path((m_folder / "out").string() + "/");
    PressInPopups("FinishBtn");
    Click("BtnRecover");
    EXPECT_EQ(m_dialogs.folderTitle, "Select location for recovery");
    EXPECT_EQ(m_window->State().restoreFolder, m_folder / "out");
    std::vector<ByteVector> restored = Restored();
    EXPECT_TRUE(
        std::is_permutation(restored.begin(), restored.end(), m_photos.begin(), m_photos.end()));

    Click("BtnPrev");
    EXPECT_EQ(Page(), 1) << "from a plain scan";
    Click("BtnAdvanceScan");
    ScanUntilResults();
    Click("BtnPrev");
    EXPECT_EQ(Page(), 2) << "from a scan of the page of types";
}

TEST_F(WizardRoadTest, ArrowKeysFetchOnlyWhereTheyRest)
{
    LoadImage();
    ScanUntilResults();
    auto& pane = Get<CRichEditUI>("PreviewEdit");
    ASSERT_TRUE(WaitFor([&pane] { return pane.HasPicture() && !CPopUpWnd::IsAnyModal(); }));
    pane.Clear();
    QTest::keyClick(Files().Widget(), Qt::Key_Down);
    QTest::qWait(100);
    EXPECT_FALSE(pane.HasPicture() || CPopUpWnd::IsAnyModal());
    QTest::keyClick(Files().Widget(), Qt::Key_Down);
    EXPECT_EQ(Files().GetCurSel(), 2);
    ASSERT_TRUE(WaitFor([&pane] { return pane.HasPicture() && !CPopUpWnd::IsAnyModal(); }));
}

TEST_F(WizardRoadTest, ASoundIsFetchedForThePlayer)
{
    LoadImage();
    ScanUntilResults();
    ASSERT_TRUE(WaitFor([this] { return Get<CRichEditUI>("PreviewEdit").HasPicture(); }));
    Get<CTreeViewUI>("TypeTree").SelectNode(Node("NodeAudio").GetItemAt(0));
    Files().SelectItem(0);
    ASSERT_TRUE(WaitFor([this] { return !m_played.empty() && !CPopUpWnd::IsAnyModal(); }));
    ASSERT_EQ(m_played.size(), 1u);
    EXPECT_EQ(m_played[0].substr(0, 6), "audio ");
    EXPECT_EQ(ReadFileBytes(m_played[0].substr(6)), ByteVector(3000, 0x55));
    EXPECT_FALSE(Get<CRichEditUI>("PreviewEdit").HasPicture());

    // What another part has fetched is played the same way.
    auto* preview = new CPreviewWnd;
    preview->data.isPlayable = true;
    preview->data.tempPath = "clip.avi";
    m_window->HandleMessage(WM_SHOW_PREVIEW, 0, std::bit_cast<std::intptr_t>(preview));
    EXPECT_EQ(m_played.back(), "video clip.avi");
}

TEST_F(WizardRoadTest, AHeaderScansAllOfItsDiskAndShowsTheFirst)
{
    m_system.AddDisk("sda", "8:0", 16 * MiB, {{"removable", "1"}});
    FillCard(m_system.Node("sda"));
    Open();
    Disks().SelectItem(1);
    Disks().SelectItem(0);
    Click("BtnRecoverMode");
    Disks().SelectItem(0);
    ScanUntilResults();
    EXPECT_EQ(Files().GetCount(), 3);
    // Onto the stick itself nothing is restored without a question.
    MountTestFolder("8:0 / / rw - vfat none rw");
    m_dialogs.folder = m_folder / "out";
    m_answers = {CloseCancelled};
    m_asked.clear();
    Tick(0);
    Click("BtnRecover");
    ASSERT_EQ(m_asked.size(), 1u);
    EXPECT_EQ(m_asked[0].substr(0, 30), "1 The folder is on the drive t");
    EXPECT_FALSE(fs::exists(m_folder / "out"));
    // Nor is it scanned when the records of the scan would land on it.
    Click("BtnPrev");
    m_answers = {CloseCancelled};
    Click("BtnScan");
    ASSERT_EQ(m_asked.size(), 2u);
    EXPECT_EQ(m_asked[1].substr(0, 30), "4 The records of this scan wou");
    EXPECT_FALSE(CPopUpWnd::IsAnyModal());
}

TEST_F(WizardRoadTest, AStripShowsWhereAScanReadFailedAndFoundFiles)
{
    LoadImage();
    FailingReader source;
    source.FailBytes(12 * MiB, 12 * MiB + 4096);
    ScanUntilResults();
    const std::string strip = m_window->State().targets[0]->engine->Strip()(64);
    ASSERT_EQ(strip.size(), 64u);
    EXPECT_EQ(strip[48], '-') << strip;
    EXPECT_EQ(strip[60], '+') << strip;
    EXPECT_EQ(strip.find('!'), std::string::npos) << strip;
    // The folder and the photos stand at the beginning.
    const std::size_t found = strip.find('F');
    EXPECT_LT(found, 4u) << strip;
    EXPECT_EQ(strip.find('F', 16), std::string::npos) << strip;
}

TEST_F(WizardRoadTest, AnImageDroppedOnTheWindowIsListedAndSelected)
{
    FillCard(m_folder / "card.img");
    Open();
    const auto drop = [this](const fs::path& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path.string()))});
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton,
                              Qt::NoModifier);
        QCoreApplication::sendEvent(m_window, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window, &event);
        QCoreApplication::processEvents();
    };
    drop(m_folder / "card.img");
    EXPECT_EQ(Page(), 1);
    EXPECT_EQ(Text("Label1"), "Image: card.img");
    EXPECT_TRUE(Get("BtnAdvanceScan").IsEnabled());
    EXPECT_TRUE(m_asked.empty());
    drop(m_folder.Path());
    EXPECT_EQ(m_asked,
              std::vector<std::string>{"2 This is no image file: " + m_folder.Path().string()});
    EXPECT_EQ(m_window->State().targets.size(), 1u);
}

TEST_F(WizardRoadTest, AScanThatIsStoppedShowsWhatWasFound)
{
    LoadImage();
    PressInPopups("cancelbtn");
    ScanUntilResults();
    EXPECT_TRUE(m_window->State().targets[0]->engine);
}

TEST_F(WizardRoadTest, AnUnreadableImageIsAMessage)
{
    LoadImage();
    fs::remove(m_folder / "card.img");
    Click("BtnScan");
    EXPECT_EQ(m_asked, (std::vector<std::string>{
                           "3 The scan could not start: the drive or image cannot be read.",
                           "2 The drive or image is no longer there."}));
    EXPECT_EQ(Page(), 1);
}

TEST_F(WizardRoadTest, ADiskThatGoesDuringItsScanStaysUntilTheScanIsOver)
{
    m_system.AddDisk("sda", "8:0", 16 * MiB, {{"removable", "1"}});
    FillCard(m_system.Node("sda"));
    Open();
    Click("BtnRecoverMode");
    bool wasKept = false;
    QTimer removal;
    removal.setSingleShot(true);
    removal.start(0);
    QObject::connect(&removal, &QTimer::timeout, m_window, [&] {
        m_system.Remove("sda");
        Get("PartitionListBar").SendNotify(NotifyTimer, 1);
        WaitFor([this] { return !m_window->IsListingDisks(); });
        wasKept = m_window->State().targets.size() == 1;
    });
    Click("BtnScan");
    ASSERT_TRUE(WaitFor([this] { return m_window->State().targets.empty(); }));
    EXPECT_TRUE(wasKept);
    EXPECT_EQ(DiskRows(), "");
}

TEST_F(WizardRoadTest, AnotherScannedTargetIsChosenAndTicksStay)
{
    FillCard(m_folder / "other.img");
    LoadImage();
    m_dialogs.image = m_folder / "other.img";
    Click("BtnLoadImage");
    auto& chooser = Get<CComboUI>("TargetChooser");
    ScanUntilResults();
    EXPECT_FALSE(chooser.IsVisible()) << "one alone";
    Click("BtnPrev");
    Disks().SelectItem(Disks().GetCount() - 3);  // the header of both
    ScanUntilResults();
    ASSERT_TRUE(WaitFor([] { return !CPopUpWnd::IsAnyModal(); }));
    EXPECT_TRUE(chooser.IsVisible());
    ASSERT_EQ(chooser.count(), 2);
    EXPECT_EQ(chooser.GetText(), "Image: card.img");
    EXPECT_EQ(m_window->State().results.front().record.DriveLetter, 1001);
    Jpg().GetCheckBox().Selected(true);
    Get<CEditUI>("FilterEdit").setText("HoTo1");
    ASSERT_TRUE(WaitFor([this] { return Files().GetCount() == 1; }));

    const auto choose = [&](int index, std::uint16_t letter) {
        chooser.Choose(index);
        ASSERT_TRUE(WaitFor([&] {
            const auto& results = m_window->State().results;
            return !CPopUpWnd::IsAnyModal() && !results.empty() &&
                   results.front().record.DriveLetter == letter && Files().GetCount() > 0;
        }));
    };
    choose(1, 1002);
    EXPECT_FALSE(Jpg().GetCheckBox().IsSelected());
    EXPECT_EQ(Files().GetCount(), 1) << "what is typed still holds";
    Tick(0);
    EXPECT_EQ(m_window->State().selection.size(), 4u);
    Shoot("page3-chooser");
    choose(0, 1001);
    EXPECT_TRUE(Jpg().GetCheckBox().IsSelected());
    EXPECT_FALSE(Jpg().GetCheckBox().IsPartial());
    EXPECT_TRUE(Files().GetItemAt(0)->IsChecked());

    fs::create_directory(m_folder / "out");
    m_dialogs.folder = m_folder / "out";
    PressInPopups("FinishBtn");
    Click("BtnRecover");
    EXPECT_EQ(Restored().size(), 4u) << "of both";
}

}  // namespace
