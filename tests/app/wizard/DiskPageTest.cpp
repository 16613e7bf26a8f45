// Pages 0 and 1: modes, the list of disks and what comes and goes there, and images of them.
#include "app/popups/Messages.h"
#include "app/popups/PopUpWnd.h"
#include "app/wizard/DiskRefresh.h"
#include "app/wizard/DiskTexts.h"
#include "tests/app/wizard/WizardFixture.h"
#include "tests/support/FailingReader.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/RunCommand.h"
#include "texts/LanguageManager.h"
#include "ui/markup/TextMarkup.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::uint64_t MiB = 1 << 20;

TEST(DiskTexts, NamesFromADiskAreNeverMarkup)
{
    TargetRow row;
    row.number = 3;
    row.label = "{i x.png 1 0}<a>";
    const auto shown = [&row] {
        return PlainText(VolumeNameText(row), true).trimmed().toStdString();
    };
    EXPECT_EQ(shown(), "3:\\ {i x.png 1 0}<a>");
    row.number = u'A';
    EXPECT_EQ(shown(), "65:\\ {i x.png 1 0}<a>");
    row.freeBytes = std::uint64_t{1} << 63;
    EXPECT_EQ(shown(), "*:\\");
    EXPECT_EQ(PlainText(CellText("{f 5}<a>"), true).toStdString(), "{f 5}<a>");
}

// What can be found where the file system is not understood, and a tip that nothing hides in.
TEST(DiskTexts, SayWhereADriveIsAndWhatIsOnIt)
{
    (void)LanguageManager::GetInstance().SetLanguage("English");
    RecoveryTarget target;
    target.volume.emplace();
    TargetRow& row = *target.volume;
    row.number = 3;
    row.label = "a\u202Eb<b>";
    row.node = "/dev/sdb2";
    row.mountPoint = "/media/x\ny";
    row.disk.model = "Made \u200F7";
    const std::vector<std::pair<const char*, const char*>> contents = {
        {"NTFS", ""},
        {"FAT", ""},
        {"", ""},
        {"ext4", "ext4: f"},
        {"exFAT", "exFAT:"},
        {"crypto_LUKS", "LUKS: encrypted"},
        {"swap", "swap spa"},
        {"LVM2_member", "LVM: part of a volume"},
    };
    for (const auto& [fileSystem, begin] : contents) {
        row.fileSystem = fileSystem;
        const std::string text = DetailsOf(target)[9].toStdString();
        EXPECT_TRUE(text.starts_with(begin) && text.empty() == (*begin == '\0'))
            << fileSystem << ": " << text;
    }
    EXPECT_EQ(DetailsOf(target)[6], "Device: /dev/sdb2");
    EXPECT_EQ(DetailsOf(target)[7], "Mounted at: /media/x?y");
    const QStringList tip = ToolTipOf(target).split('\n');
    EXPECT_EQ(tip.size(), 10);
    EXPECT_EQ(tip[1].toStdString(), "Label: a\\u202Eb<b>");
    EXPECT_EQ(tip[8].toStdString(), "Model: Made \\u200F7");
    row.mountPoint.clear();
    row.disk.model.clear();
    EXPECT_EQ(ToolTipOf(target).split('\n').size(), 8);
}

class DiskPageTest : public WizardTest
{
protected:
    void SetUp() override
    {
        if (const std::string missing = MissingTool({"sfdisk", "mkfs.fat"}); !missing.empty()) {
            GTEST_SKIP() << missing;
        }
        m_system.AddDisk("sda", "8:0", 64 * MiB, {{"device/model", "Made up"}});
        const FatCard card(m_system.Node("sda"), {.fatBits = 16,
                                                  .volumeBytes = 32 * MiB,
                                                  .sectorsPerCluster = 4,
                                                  .startByte = 2048 * 512,
                                                  .tailBytes = 31 * MiB,
                                                  .extra = {"-n", "WORK"}});
        MakeTable(m_system.Node("sda"), "label: dos\nstart=2048, size=65536, type=6\n");
        Open();
    }
    void AddStick(const char* name = "sdb", const char* number = "8:16")
    {
        m_system.AddDisk(name, number, 8 * MiB, {{"removable", "1"}});
    }
    // What the timers do when their time has come.
    void Refresh(int timer)
    {
        Get("PartitionListBar").SendNotify(NotifyTimer, timer);
        ASSERT_TRUE(WaitFor([this] { return !m_window->IsListingDisks(); }));
    }
    void CopyTo(const std::filesystem::path& file)
    {
        m_dialogs.saves.push_back(file);
        Click("BtnCreateImage");
    }
};

TEST_F(DiskPageTest, TheFirstPageSaysToStopUsingTheDiskAndWhatToDo)
{
    EXPECT_EQ(Text("StopText").substr(0, 19), "Stop using the disk");
    EXPECT_TRUE(Text("StartText").starts_with("Choose the drive or image"));
    ASSERT_EQ(LanguageManager::GetInstance().SetLanguage("German"), ResultSuccess);
    m_window->HandleMessage(WM_LANGUAGE_CHANGED, 0, 0);
    LanguageSection& extras = LanguageManager::GetInstance().GetSection("Extras");
    EXPECT_EQ(Text("StopText"), extras.Get("EXT0120"));
    EXPECT_EQ(Text("StartText"), extras.Get("EXT0121"));
}

TEST_F(DiskPageTest, EachModeShowsItsButtonsAndTexts)
{
    EXPECT_EQ(Page(), 0);
    EXPECT_TRUE(IsVisible("SubBar1"));
    EXPECT_FALSE(IsVisible("ToolBar2") || IsVisible("ToolBar3") || IsVisible("SubBar2"));
    Get("BtnCreateImageMode").SendNotify(NotifyHot);
    EXPECT_EQ(Text("TxtMainInfo").substr(0, 12), "Copy a drive");
    Shoot("page0");

    Click("BtnCreateImageMode");
    EXPECT_EQ(Page(), 1);
    EXPECT_EQ(Text("TabScan"), "Create image");
    EXPECT_TRUE(IsVisible("BtnCreateImage") && IsVisible("ToolBar3") && IsVisible("Txt1"));
    EXPECT_FALSE(IsVisible("BtnScan") || IsVisible("BtnLoadImage") || IsVisible("TabRecover"));
    Click("BtnPrev");
    EXPECT_EQ(Page(), 0);

    Click("BtnRecoverMode");
    EXPECT_EQ(Page(), 1);
    EXPECT_EQ(Text("TabScan"), "Drive");
    EXPECT_TRUE(IsVisible("BtnScan") && IsVisible("BtnAdvanceScan") && IsVisible("BtnLoadImage"));
    EXPECT_FALSE(IsVisible("BtnCreateImage") || IsVisible("BtnRecover") || IsVisible("SubBar1"));
    EXPECT_EQ(Get("Txt1").GetAttribute("textcolor"), "#FF0089BE");
    Shoot("page1");
    Click("BtnAdvanceScan");
    EXPECT_EQ(Page(), 2);
    EXPECT_TRUE(IsVisible("BtnScan"));
    EXPECT_FALSE(IsVisible("BtnAdvanceScan"));
    EXPECT_EQ(Get("ToolBar2").GetAttribute("bkimage"), "file='banner_bg2.png' corner='0,0,0,70'");
    Shoot("page2");
    Click("BtnPrev");
    EXPECT_EQ(Page(), 1);
}

TEST_F(DiskPageTest, RowsTellWhatIsThere)
{
    EXPECT_EQ(DiskRows(), "0:Disk 1|1:1:\\ WORK|1:2:\\");
    EXPECT_FALSE(Get("BtnAdvanceScan").IsEnabled());
    Click("BtnRecoverMode");
    EXPECT_EQ(Disks().GetCurSel(), 1) << "the first of the first disk";
    EXPECT_TRUE(Get("BtnAdvanceScan").IsEnabled());
    EXPECT_EQ(Text("Label1"), "Drive: 1");
    EXPECT_EQ(Text("Label2"), "Label: WORK");
    EXPECT_EQ(Text("Label3"), "File system: FAT");
    EXPECT_EQ(Text("Label4").substr(0, 12), "Total size: ");
    EXPECT_EQ(Text("Label7"), "Device: " + m_system.Node("sda").string());
    EXPECT_EQ(Text("Label9"), "Model: Made up");
    EXPECT_EQ(Disks().GetItemAt(0)->GetToolTip().split('\n').size(), 4) << "of the disk";
    Disks().SelectItem(2);
    EXPECT_EQ(Text("Label2"), "Label:");
    EXPECT_EQ(Text("Label6"), "Free: 29.75 MB");
    Disks().SelectItem(0);
    EXPECT_EQ(Text("Label1"), "Drive: 2") << "a header changes nothing";

    Disks().GetItemAt(0)->SendNotify(NotifyListItemDoubleClick);
    EXPECT_EQ(DiskRows(), "0:Disk 1");
    Disks().GetItemAt(0)->SendNotify(NotifyListItemDoubleClick);
    EXPECT_EQ(DiskRows(), "0:Disk 1|1:1:\\ WORK|1:2:\\");
}

TEST_F(DiskPageTest, WithoutAChosenTargetNothingStarts)
{
    Disks().SelectItem(0);
    Click("BtnScan");
    Click("BtnCreateImage");
    Disks().SelectItem(-1);
    Click("BtnScan");
    EXPECT_EQ(m_asked, (std::vector<std::string>{
                           "2 Please choose the drive or image that you want to scan.",
                           "2 Please choose the drive that you want to copy.",
                           "2 Please choose the drive or image that you want to scan."}));
    EXPECT_TRUE(m_dialogs.proposals.empty());
}

TEST_F(DiskPageTest, AStickComesIsSelectedAndGoesWithItsTargets)
{
    Click("BtnRecoverMode");
    AddStick();
    Refresh(0);
    EXPECT_EQ(DiskRows(), "0:Disk 1|1:1:\\ WORK|1:2:\\|0:Removable disk 2|1:3:\\");
    EXPECT_EQ(Disks().GetCurSel(), 4);
    EXPECT_EQ(m_window->State().targets.size(), 3u);
    Refresh(0);
    EXPECT_EQ(m_window->State().targets.size(), 3u) << "what is listed stays as it is";
    m_system.Remove("sdb");
    Refresh(0);
    EXPECT_EQ(m_window->State().targets.size(), 3u) << "an arrival takes nothing away";
    // That list is the known one by now, so nothing is missing from it.
    Refresh(1);
    EXPECT_EQ(m_window->State().targets.size(), 3u);
    AddStick("sdc", "8:32");
    Refresh(0);
    m_system.Remove("sdc");
    Refresh(1);
    EXPECT_EQ(m_window->State().targets.size(), 3u);
    EXPECT_EQ(Disks().GetCurSel(), -1);
}

TEST_F(DiskPageTest, WhatTheUserDoesBeforeTheListIsThereStays)
{
    delete std::exchange(m_window, nullptr);
    Make();
    ASSERT_TRUE(m_window->IsListingDisks());
    Click("BtnRecoverMode");
    m_window->AddImage(m_folder / "early.img");
    AddStick();
    // Comes while the first list is being made, and is asked for after it.
    Refresh(0);
    EXPECT_TRUE(DiskRows().starts_with("0:Image File|1:early.img|0:Disk 1|")) << DiskRows();
    EXPECT_EQ(m_window->State().targets.size(), 4u);
    EXPECT_TRUE(Get("BtnAdvanceScan").IsEnabled()) << "a row is selected";
}

TEST_F(DiskPageTest, EventsStartTheTimersWhichEndTogether)
{
    m_window->HandleMessage(WM_DEVICECHANGE, DeviceArrival, 0);
    EXPECT_TRUE(Get("PartitionListBar").HasTimer(0));
    EXPECT_FALSE(Get("PartitionListBar").HasTimer(1));
    m_window->HandleMessage(WM_DEVICECHANGE, DeviceRemoval, 0);
    EXPECT_TRUE(Get("PartitionListBar").HasTimer(1));
    Refresh(1);
    EXPECT_FALSE(Get("PartitionListBar").HasTimer(0) || Get("PartitionListBar").HasTimer(1));
}

TEST_F(DiskPageTest, ImagesHaveAHeaderOfTheirOwnThatImageModeHides)
{
    WriteFileBytes(m_folder / "{x 1}.img", ByteVector(1536));
    m_dialogs.image = m_folder / "{x 1}.img";
    Click("BtnRecoverMode");
    Click("BtnLoadImage");
    Click("BtnLoadImage");
    EXPECT_EQ(DiskRows(), "0:Disk 1|1:1:\\ WORK|1:2:\\|0:Image File|1:{x 1}.img|1:{x 1}.img");
    EXPECT_EQ(m_window->State().targets[2]->Letter(), 1001);
    EXPECT_EQ(m_window->State().targets[3]->Letter(), 1002);
    Disks().SelectItem(4);
    EXPECT_EQ(Text("Label1"), "Image: {x 1}.img");
    EXPECT_EQ(Text("Label2"), "Image size: 1.50 KB");
    EXPECT_EQ(Text("Label3"), "");
    Shoot("page1-images");

    Click("BtnPrev");
    Click("BtnCreateImageMode");
    EXPECT_EQ(DiskRows(), "0:Disk 1|1:1:\\ WORK|1:2:\\");
    Disks().SelectItem(4);
    Click("BtnCreateImage");
    EXPECT_EQ(m_asked.size(), 1u) << "an image is no source of one";
    Click("BtnPrev");
    Click("BtnRecoverMode");
    EXPECT_EQ(DiskRows(), "0:Disk 1|1:1:\\ WORK|1:2:\\|0:Image File|1:{x 1}.img|1:{x 1}.img");
}

TEST_F(DiskPageTest, PartsOfAnImageStandBehindItAndAreScannedAlone)
{
    std::filesystem::copy_file(m_system.Node("sda"), m_folder / "disk.img");
    WriteFileBytes(m_folder / "b.img", ByteVector(65536));
    Click("BtnRecoverMode");
    m_window->AddImage(m_folder / "disk.img");
    m_window->AddImage(m_folder / "b.img");
    const std::string rows =
        "0:Disk 1|1:1:\\ WORK|1:2:\\|0:Image File|1:disk.img|1:#1|1:#2 WORK|1:#3|1:b.img";
    ASSERT_TRUE(WaitFor([&] { return DiskRows() == rows; })) << DiskRows();
    std::vector<int> letters;
    for (const auto& target : m_window->State().targets) {
        letters.push_back(target->Letter());
    }
    EXPECT_EQ(letters, (std::vector<int>{1, 2, 1001, 1002, 0xFFFE, 0xFFFD, 0xFFFC}));
    Disks().SelectItem(6);
    EXPECT_EQ(Text("Label1"), "Image: disk.img#2");
    EXPECT_EQ(Text("Label2"), "Label: WORK");
    EXPECT_EQ(Text("Label3"), "File system: FAT");
    EXPECT_EQ(Text("Label7"), "Folder: " + m_folder.Path().string());
    Shoot("page1-parts");
    Click("BtnScan");
    ASSERT_TRUE(WaitFor([this] { return Page() == 3; }));
    const RecoveryTarget& part = *m_window->State().targets[5];
    ASSERT_NE(part.engine, nullptr);
    EXPECT_EQ(part.engine->Target().startSector, 2048u);
    EXPECT_EQ(part.engine->Target().letter, 0xFFFD);

    Click("BtnPrev");
    Disks().SelectItem(3);
    Click("BtnScan");
    ASSERT_TRUE(WaitFor([this] { return Page() == 3; }));
    EXPECT_NE(m_window->State().targets[2]->engine, nullptr);
    EXPECT_NE(m_window->State().targets[3]->engine, nullptr);
    EXPECT_EQ(m_window->State().targets[4]->engine, nullptr) << "the header takes whole images";
    Click("BtnPrev");
    Click("BtnPrev");
    Click("BtnCreateImageMode");
    EXPECT_EQ(DiskRows(), "0:Disk 1|1:1:\\ WORK|1:2:\\");
}

TEST_F(DiskPageTest, APartitionIsCopiedAndTheImageGoneOnWith)
{
    Click("BtnCreateImageMode");
    CopyTo(m_folder / "copy.img");
    ASSERT_EQ(m_dialogs.proposals.size(), 1u);
    EXPECT_EQ(m_dialogs.proposals[0].substr(0, 8), "1 (FAT, ");
    EXPECT_EQ(m_asked, (std::vector<std::string>{
                           "4 Do you want to open the image file now and recover files from it?"}));
    ByteVector disk = ReadFileBytes(m_system.Node("sda"));
    EXPECT_TRUE(std::equal(disk.begin() + 2048 * 512, disk.begin() + 2048 * 512 + 32 * MiB,
                           ReadFileBytes(m_folder / "copy.img").begin()));
    EXPECT_EQ(Page(), 2);
    EXPECT_TRUE(IsVisible("BtnScan"));
    EXPECT_EQ(Text("Label1"), "Image: copy.img");

    // A header stands for the whole disk; a refusal leads back to the dialog with the name.
    m_answers = {CloseDone, CloseCancelled};
    Click("BtnPrev");
    Click("BtnPrev");
    Click("BtnCreateImageMode");
    Disks().SelectItem(0);
    m_dialogs.saves.push_back(m_folder / "no" / "such.img");
    CopyTo(m_folder / "whole.img");
    EXPECT_EQ(m_dialogs.proposals[1], "Physical Disk 1");
    EXPECT_EQ(m_dialogs.proposals[2], (m_folder / "no" / "such.img").string());
    EXPECT_EQ(m_asked[1], "2 An image can only be saved as a plain file in a folder that exists.");
    EXPECT_EQ(ReadFileBytes(m_folder / "whole.img"), disk);
    EXPECT_EQ(Page(), 1) << "the image was not wanted";
}

TEST_F(DiskPageTest, ADiskWithBadSectorsIsRescuedFromWhereItsCopyEnded)
{
    Click("BtnCreateImageMode");
    const std::filesystem::path image = m_folder / "copy.img";
    const std::uint64_t bad = 10 * MiB + 512;  // of the partition
    FailingReader source;
    source.FailBytes(2048 * 512 + bad, 2048 * 512 + bad + 1024);
    CopyTo(image);
    ASSERT_EQ(m_asked.size(), 4u);
    EXPECT_EQ(m_asked[0], "2 The image file could not be completed.");
    EXPECT_EQ(m_asked[1].substr(0, 38), "4 A part of the disk cannot be read. D");
    EXPECT_EQ(m_asked[2], "2 Read: 32.00 MB of 32.00 MB. What could not be read stays empty in "
                          "the image file.");
    EXPECT_EQ(m_asked[3].substr(0, 25), "4 Do you want to open the");
    EXPECT_EQ(Page(), 2);
    const ByteVector disk = ReadFileBytes(m_system.Node("sda"));
    ByteVector wanted(disk.begin() + 2048 * 512, disk.begin() + 2048 * 512 + 32 * MiB);
    std::fill_n(wanted.begin() + static_cast<std::ptrdiff_t>(bad), 1024, std::uint8_t{0});
    EXPECT_EQ(ReadFileBytes(image), wanted);
    EXPECT_LT(source.BytesRead(), 33 * MiB) << "what was copied is not read again";

    // The next image of that name can go on with it, and the disk reads well again.
    source.Heal();
    m_asked.clear();
    Click("BtnPrev");
    Click("BtnPrev");
    Click("BtnCreateImageMode");
    // Escape twice throws nothing away, and leads back to the file's name.
    m_answers = {CloseCancelled, CloseCancelled};
    CopyTo(image);
    ASSERT_EQ(m_asked.size(), 2u);
    CopyTo(image);
    ASSERT_EQ(m_asked.size(), 5u);
    EXPECT_EQ(m_asked[1].substr(0, 18), "1 What was rescued");
    EXPECT_EQ(m_asked[2].substr(0, 22), "4 An earlier rescue in");
    EXPECT_EQ(m_asked[3], "2 All of the disk could be read. The image file is complete.");
}

TEST_F(DiskPageTest, TheLanguageChangesOnEachPage)
{
    Click("BtnRecoverMode");
    ASSERT_EQ(LanguageManager::GetInstance().SetLanguage("German"), ResultSuccess);
    m_window->HandleMessage(WM_LANGUAGE_CHANGED, 0, 0);
    LanguageSection& messages = LanguageManager::GetInstance().GetSection("Messages");
    EXPECT_EQ(DiskRows(), "0:Datenträger 1|1:1:\\ WORK|1:2:\\");
    EXPECT_EQ(Text("Txt1"), messages.Get("MSG0501"));
    EXPECT_EQ(Text("TabScan"), messages.Get("MSG0503"));
    EXPECT_EQ(Text("Label1"), "Laufwerk: 1");
    EXPECT_EQ(Text("BtnScan"), LanguageManager::GetInstance().GetSection("MainWnd").Get("BtnScan"));
    Click("BtnAdvanceScan");
    ASSERT_EQ(LanguageManager::GetInstance().SetLanguage("French"), ResultSuccess);
    m_window->HandleMessage(WM_LANGUAGE_CHANGED, 0, 0);
    EXPECT_EQ(Text("Txt1"), messages.Get("MSG0601"));
    EXPECT_EQ(Page(), 2);
}

}  // namespace
