// What goes wrong around the main window, and what the user is told of it; what is no fault beside it: the menu and the preview
// in a window of its own.
#include "app/popups/Messages.h"
#include "app/popups/RecoverProcessWnd.h"
#include "app/preview/PreviewWnd.h"
#include "app/process/HelpPages.h"
#include "platform/ResultCode.h"
#include "platform/Version.h"
#include "tests/app/wizard/WizardFixture.h"
#include "tests/support/Bytes.h"
#include "tests/support/FakeEngines.h"
#include "texts/LanguageManager.h"
#include "ui/controls/RichEditUI.h"
#include "ui/custom/MenuUI.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <bit>

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t MiB = 1 << 20;

// Over engines that find, restore and fail as they are told.
class FaultsTest : public WizardTest
{
protected:
    FaultsTest()
    {
        m_session = std::make_unique<Session>(std::make_shared<FakeEngines>(m_script));
        m_session->History().KeepRecordsIn(m_folder / "data");
        m_script.content = Bytes("'data'");
        for (const char* name : {"a.jpg", "b.jpg"}) {
            m_script.Add(name, 4);
        }
        m_script.calls.push_back({100});
    }
    void OpenWithImages(int count)
    {
        Open();
        Click("BtnRecoverMode");
        for (int i = 0; i < count; ++i) {
            const fs::path path = m_folder / ("card" + std::to_string(i) + ".img");
            WriteFileBytes(path, ByteVector(4096));
            m_window->AddImage(path);
        }
        Disks().SelectItem(Disks().GetCount() - 1);
    }
    // The next popup of that kind, once it is shown.
    template <typename Popup>
    void OnPopup(std::function<void(Popup& popup)> act)
    {
        auto* const timer = new QTimer(m_window);
        QObject::connect(timer, &QTimer::timeout, m_window, [timer, act = std::move(act)] {
            for (QWidget* const widget : QApplication::topLevelWidgets()) {
                auto* const popup = dynamic_cast<Popup*>(widget);
                if (popup != nullptr && popup->isVisible()) {
                    timer->deleteLater();
                    timer->stop();
                    act(*popup);
                    return;
                }
            }
        });
        timer->start(5);
    }

    FakeScript m_script;
};

TEST_F(FaultsTest, WhatAScanCouldNotDoIsToldBeforeItsResults)
{
    constexpr char Gone[] = "The drive stopped answering before the scan was over. What was found "
                            "until then is shown.";
    constexpr char Fault[] = "The scan met a fault and may be incomplete.";
    constexpr char Lost[] = "Files that were found, but could not be noted in your data folder and "
                            "are missing: 3.";
    constexpr char Folders[] = "Some folders could not be noted in your data folder. Their files "
                               "are shown without a path.";
    constexpr char Unread[] = "Sectors that could not be read: 12. Files that lay there may be "
                              "damaged or missing.";
    struct Case
    {
        ResultCode scans;
        LostRecords lost;
        std::uint64_t unread;
        std::string told;
    };
    const Case cases[] = {
        {ResultSuccess, {}, 0, ""},
        {ResultNotConnected, {}, 0, Gone},
        {ResultShortRead, {}, 12, std::string(Fault) + "\n" + Unread},
        {ResultSuccess, {3, ResultDiskFull}, 0, Lost},
        {ResultSuccess, {0, ResultDiskFull}, 12, std::string(Folders) + "\n" + Unread},
    };
    OpenWithImages(1);
    for (const Case& row : cases) {
        m_script.scans = row.scans;
        m_script.lost = row.lost;
        m_script.unread = {};
        if (row.unread != 0) {
            m_script.unread.Add(100, row.unread);
        }
        m_asked.clear();
        Get<COptionUI>("TabScan").Selected(true);
        ASSERT_EQ(Page(), 1);
        Click("BtnScan");
        EXPECT_EQ(Page(), 1) << "told while the results are not there yet";
        EXPECT_EQ(m_asked, row.told.empty() ? std::vector<std::string>{}
                                            : std::vector<std::string>{"3 " + row.told});
        ASSERT_TRUE(WaitFor([this] { return Page() == 3 && !CPopUpWnd::IsAnyModal(); }));
        EXPECT_EQ(Files().GetCount(), 2) << "nothing of what was found is lost";
    }
}

TEST_F(FaultsTest, ADriveThatCannotBeOpenedIsToldBeforeWhatTheOthersLack)
{
    OpenWithImages(2);
    Disks().SelectItem(Disks().GetCount() - 3);
    m_script.scans = ResultNotConnected;
    m_script.inScan = [this] { m_script.opens = ResultShortRead; };
    Click("BtnScan");
    ASSERT_EQ(m_asked.size(), 3u);
    EXPECT_EQ(m_asked[0], "3 The scan could not start: the drive or image cannot be read.");
    EXPECT_EQ(m_asked[2].substr(0, 22), "3 The drive stopped an");
}

TEST_F(FaultsTest, AScanThatCannotOpenItsTargetSaysWhy)
{
    OpenWithImages(1);
    const std::pair<ResultCode, const char*> cases[] = {
        {ResultAccessDenied, "2 You do not have the rights to read the drive or image."},
        {ResultNotConnected, "2 The drive or image is no longer there."},
        {ResultShortRead, "2 The drive or image is too short to hold a file system."},
        {ResultBusy, "2 The drive or image is in use by another program."},
        {ResultTooManyOpenFiles, "2 The system says: Too many files are open."},
    };
    for (const auto& [why, reason] : cases) {
        m_asked.clear();
        m_script.opens = why;
        Click("BtnScan");
        EXPECT_EQ(m_asked,
                  (std::vector<std::string>{
                      "3 The scan could not start: the drive or image cannot be read.", reason}));
    }
}

TEST_F(FaultsTest, ADamagedFileSystemLeadsToAScanOfAllSectors)
{
    OpenWithImages(1);
    m_script.scans = ResultShortRead;
    m_script.quickFault = ResultShortRead;
    int begun = 0;
    m_script.begins = [this, &begun] {
        if (++begun == 2) {
            m_script.scans = m_script.quickFault = ResultSuccess;
        }
    };
    Click("BtnScan");
    ASSERT_TRUE(WaitFor([this] { return Page() == 3 && !CPopUpWnd::IsAnyModal(); }));
    ASSERT_EQ(m_asked.size(), 1u);
    EXPECT_EQ(m_asked[0].substr(0, 29), "4 The file system is damaged,");
    EXPECT_EQ(m_script.depths, (std::vector{ScanDepth::Deep, ScanDepth::Whole}));
    EXPECT_EQ(begun, 3) << "two scans, and one search";
    EXPECT_EQ(Files().GetCount(), 2);
}

TEST_F(FaultsTest, TheReportIsSavedWithDamagedFilesAndHowManyCameBack)
{
    m_script.Add("cut.jpg", 2048 + 4);
    OpenWithImages(1);
    Click("BtnScan");
    ASSERT_TRUE(WaitFor([this] { return Page() == 3 && !CPopUpWnd::IsAnyModal(); }));
    Node("NodePhoto").GetItemAt(0)->GetCheckBox().Selected(true);
    const fs::path out = m_folder / "out\u202E\nout";
    fs::create_directory(out);
    m_dialogs.folder = out;
    m_dialogs.text = m_folder / "report.txt";
    OnPopup<CRecoverProcessWnd>([](CRecoverProcessWnd& popup) {
        const auto click = [&popup](const char* name) {
            popup.SendNotify(*popup.FindControl(QLatin1String(name)), NotifyClick);
        };
        ASSERT_TRUE(WaitFor(
            [&popup] { return popup.FindControl(QStringLiteral("SaveBtn"))->IsEnabled(); }));
        click("DetailBtn");
        click("SaveBtn");
        click("FinishBtn");
    });
    Click("BtnRecover");
    const ByteVector bytes = ReadFileBytes(m_folder / "report.txt");
    const std::string text(bytes.begin(), bytes.end());
    const std::string shown = (m_folder / "out").string() + "\\u202E?out";
    EXPECT_EQ(text.substr(0, 16), "Recovery report\n");
    const std::size_t cut = text.find("Success; Missing: 2.00 KB\t" + shown + "/photo/cut.jpg\n");
    EXPECT_LT(cut, text.find("Success\t" + shown + "/photo/a.jpg\n")) << text;
    EXPECT_TRUE(
        text.ends_with("\n\nFiles recovered: 3 of 3, damaged: 1, in the folder " + shown + ".\n"))
        << text;
}

TEST_F(FaultsTest, FilesThatDoNotFitAreAskedAboutBefore)
{
    m_script.Add("huge.jpg", std::uint64_t{1} << 60);
    OpenWithImages(1);
    Click("BtnScan");
    ASSERT_TRUE(WaitFor([this] { return Page() == 3 && !CPopUpWnd::IsAnyModal(); }));
    m_dialogs.folder = m_folder.Path();
    Node("NodePhoto").GetItemAt(0)->GetCheckBox().Selected(true);
    m_answers = {CloseCancelled};
    Click("BtnRecover");
    ASSERT_EQ(m_asked.size(), 1u);
    EXPECT_EQ(m_asked[0].substr(0, 43), "1 The selected files need 1048576.00 TB, bu");
    EXPECT_FALSE(fs::exists(m_folder / "photo"));
}

TEST_F(FaultsTest, AListOfDisksThatCannotBeMadeIsToldOnceAndTakesNothingAway)
{
    m_system.AddDisk("sda", "8:0", 8 * MiB);
    Open();
    const std::string rows = DiskRows();
    ASSERT_NE(rows, "");
    const fs::path kernel = m_system.Folder() / "sys";
    fs::rename(kernel, m_system.Folder() / "gone");
    for (const int timer : {1, 0}) {
        Get("PartitionListBar").SendNotify(NotifyTimer, timer);
        ASSERT_TRUE(WaitFor([this] { return !m_window->IsListingDisks(); }));
    }
    ASSERT_EQ(m_asked.size(), 1u);
    EXPECT_EQ(m_asked[0].substr(0, 36), "3 The disks and drives of this compu");
    EXPECT_EQ(DiskRows(), rows);

    fs::rename(m_system.Folder() / "gone", kernel);
    Get("PartitionListBar").SendNotify(NotifyTimer, 0);
    ASSERT_TRUE(WaitFor([this] { return !m_window->IsListingDisks(); }));
    EXPECT_EQ(m_asked.size(), 1u);
}

TEST_F(FaultsTest, TheMenuOpensBelowItsButtonAndItsItemsArrive)
{
    Open();
    const auto choose = [this](std::initializer_list<int> keys) {
        Get("BtnAssist").SendNotify(NotifyClick);
        auto* menu = dynamic_cast<CMenuUI*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (const int key : keys) {
            QTest::keyClick(QApplication::activePopupWidget(), static_cast<Qt::Key>(key));
        }
        EXPECT_TRUE(WaitFor([] { return QApplication::activePopupWidget() == nullptr; }));
        QCoreApplication::processEvents();
    };
    // Up from below: exit, about.
    choose({Qt::Key_Up, Qt::Key_Up, Qt::Key_Return});
    EXPECT_EQ(m_menuItems, std::vector<std::string>{"item_about"});
    choose({Qt::Key_Escape});
    EXPECT_EQ(m_menuItems.size(), 1u);

    const std::string before = Text("TabFileType");
    choose({Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Return});
    EXPECT_NE(LanguageManager::GetInstance().GetCurrentLanguage(), "English");
    EXPECT_NE(Text("TabFileType"), before) << "the window has changed with it";
}

TEST_F(FaultsTest, TheAboutBoxSaysNameVersionAndLicence)
{
    OpenHelpPage(nullptr, QStringLiteral("item_about"));
    ASSERT_EQ(m_asked.size(), 1u);
    EXPECT_EQ(m_asked[0], std::string("2 Orvanta Lumivault ") + LumivaultVersion +
                              ". Free software under the MIT licence.");
}

TEST_F(FaultsTest, APreviewInAWindowOfItsOwnGoesByEscape)
{
    Open();
    auto* preview = new CPreviewWnd;
    const ByteVector bytes = Bytes("'some bytes'");
    std::copy(bytes.begin(), bytes.end(), preview->data.buffer.begin());
    preview->data.dataSize = static_cast<std::uint32_t>(bytes.size());
    bool wasShown = false;
    OnPopup<CPreviewWnd>([&wasShown](CPreviewWnd& popup) {
        wasShown = popup.FindControl(QStringLiteral("PreviewEdit")) != nullptr && popup.siblings &&
                   popup.askRestoreFolder;
        QTest::keyClick(&popup, Qt::Key_Escape);
    });
    EXPECT_TRUE(m_window->HandleMessage(WM_SHOW_PREVIEW, 0, std::bit_cast<std::intptr_t>(preview)));
    EXPECT_TRUE(wasShown);
    EXPECT_FALSE(CPopUpWnd::IsAnyModal());
    EXPECT_TRUE(m_window->HandleMessage(WM_SHOW_PREVIEW, 0, 0)) << "nothing to show";
}

// As if somebody had written whatever he liked into the file of the language.
TEST_F(FaultsTest, TextsOfGarbageLeaveAWindowThatWorks)
{
    const std::string garbage[] = {
        "%s%s%n%d%", "\xFF\xFE\x80",         "{f 99999}{i ../x.png}{c #}{/f",
        "<a",        std::string(1000, 'W'), ""};
    OpenWithImages(1);
    std::size_t next = 0;
    for (const char* section : {"Messages", "MainWnd", "Desktop", "ScanWnd", "SearchProcessWnd",
                                "RecoverProcessWnd", "PreviewProcessWnd", "MessageBox"}) {
        LanguageSection& texts = LanguageManager::GetInstance().GetSection(section);
        for (const auto& [key, text] : texts.Entries()) {
            texts.Set(key, garbage[next++ % std::size(garbage)]);
        }
    }
    m_script.scans = ResultNotConnected;
    m_window->HandleMessage(WM_LANGUAGE_CHANGED, 0, 0);
    Click("BtnScan");
    ASSERT_TRUE(WaitFor([this] { return Page() == 3 && !CPopUpWnd::IsAnyModal(); }));
    EXPECT_EQ(m_asked.size(), 1u);
    EXPECT_EQ(Files().GetCount(), 2);
    m_window->HandleMessage(WM_LANGUAGE_CHANGED, 0, 0);
    EXPECT_FALSE(m_window->grab().isNull());
    for (const int page : {2, 1, 0}) {
        Click("BtnPrev");
        EXPECT_LE(Page(), page);
    }
}

}  // namespace
