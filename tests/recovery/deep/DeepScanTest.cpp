// The pass itself: progress, cancel, resume, unreadable sectors, and the log that is left behind.
#include "platform/Folders.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/deep/BlockReader.h"
#include "storage/DriveRegistry.h"
#include "tests/recovery/deep/DeepSupport.h"
#include "tests/support/Bytes.h"
#include "tests/support/FailingReader.h"
#include "tests/support/FatCard.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t Sector = 512;
constexpr std::uint64_t BlockSectors = 128;

// Noise with pictures at known sectors, no file system. The last is measured over many blocks.
class DeepScanTest : public testing::Test
{
protected:
    static constexpr std::uint64_t Sectors = 20000;

    void SetUp() override
    {
        m_image.PutAt(0, RandomBytes(Sectors * Sector, 77));
        for (const std::uint64_t sector : {5u, 127u, 4000u, 9000u, 15000u}) {
            m_image.Put(sector, MakeJpeg(640, 480, sector));
        }
        m_image.Put(10000, Bytes("'FLV' 01 05 00*3 09 00*7"));
    }

    // A scan in a fresh data folder that is not disturbed.
    std::map<std::string, ByteVector> Undisturbed()
    {
        const DataFolder own;
        DeepRun run(m_image.Path());
        EXPECT_EQ(run.Scan(), ResultSuccess);
        (void)run.Search();  // writes what is buffered
        return run.StoreBytes();
    }

    DataFolder m_data;
    TempFolder m_folder;
    ImageFile m_image{m_folder / "disk.img", Sectors* Sector};
};

TEST_F(DeepScanTest, ProgressRunsFromTenToAHundredAndTen)
{
    std::vector<DeepProgress> reports;
    DeepRun run(m_image.Path());
    ASSERT_EQ(run.Scan([&](const DeepProgress& report) {
        reports.push_back(report);
        return ResultSuccess;
    }),
              ResultSuccess);
    ASSERT_GT(reports.size(), 50u);
    EXPECT_EQ(reports.front().range, 90);
    EXPECT_EQ(reports.front().totalSectors, Sectors);
    EXPECT_EQ(reports[reports.size() - 2].progress, 110);
    EXPECT_EQ(reports.back().progress, 100);
    EXPECT_EQ(reports.back().range, 100);
    EXPECT_EQ(reports.back().totalSectors, 0u);
}

TEST_F(DeepScanTest, AScanCancelledAnywhereAndResumedFindsTheSame)
{
    const auto expected = Undisturbed();
    ASSERT_EQ(expected.at("File_Type").size() / sizeof(FileRecord), 6u);
    // After so many reports: at blocks' ends, and inside the measuring of the pictures and of the film.
    for (const int reports : {1, 2, 3, 7, 35, 60, 80, 100, 120, 150}) {
        const DataFolder own;
        {
            DeepRun run(m_image.Path());
            int left = reports;
            ASSERT_EQ(
                run.Scan([&](const DeepProgress&) { return --left <= 0 ? ResultCancelled : 0; }),
                ResultCancelled)
                << reports;
        }
        DeepRun run(m_image.Path());
        ASSERT_TRUE(run.Engine().HasResumableScan()) << reports;
        ASSERT_EQ(run.Scan(), ResultSuccess);
        FileRecordList found = run.Search();
        EXPECT_EQ(found.size(), 6u) << reports;
        // The numbers begin again at 1; everything else agrees.
        ByteVector resumed = run.StoreBytes().at("File_Type");
        ByteVector whole = expected.at("File_Type");
        ASSERT_EQ(resumed.size(), whole.size());
        for (std::size_t at = 0; at < whole.size(); at += sizeof(FileRecord)) {
            std::fill_n(resumed.begin() + static_cast<std::ptrdiff_t>(at) + 18, 4, std::uint8_t{0});
            std::fill_n(whole.begin() + static_cast<std::ptrdiff_t>(at) + 18, 4, std::uint8_t{0});
        }
        EXPECT_EQ(resumed, whole) << reports;
    }
}

TEST_F(DeepScanTest, ACompleteScanIsTakenAsItStandsAndAChangedImageIsNot)
{
    {
        DeepRun run(m_image.Path());
        ASSERT_EQ(run.Scan(), ResultSuccess);
    }
    {
        DeepRun again(m_image.Path());
        ASSERT_TRUE(again.Engine().HasResumableScan());
        int reports = 0;
        ASSERT_EQ(again.Scan([&](const DeepProgress&) { return ++reports, ResultSuccess; }),
                  ResultSuccess);
        EXPECT_EQ(reports, 1);  // no pass at all, only the end
        EXPECT_EQ(again.Search().size(), 6u);
        EXPECT_EQ(again.ComparePreviews(),
                  (std::map<std::uint32_t, std::set<std::string>>{{EngineKindCarved, {"same"}}}));
    }
    m_image.Put(3, Bytes("01"));
    DeepRun changed(m_image.Path());
    EXPECT_FALSE(changed.Engine().HasResumableScan());
}

TEST_F(DeepScanTest, AScanThatIsStoppedAtOnceLeavesNothingToGoOnWith)
{
    int reports = 0;
    {
        DeepRun run(m_image.Path());
        EXPECT_EQ(run.Scan([&](const DeepProgress&) {
            return ++reports >= 20 ? ResultStoppedAtOnce : ResultSuccess;
        }),
                  ResultStoppedAtOnce);
    }
    EXPECT_LE(reports, 21) << "asked once more at the end of a block";
    EXPECT_FALSE(DeepRun(m_image.Path()).Engine().HasResumableScan());
}

TEST_F(DeepScanTest, WhatCouldNotBeReadIsKeptAndReadAnotherDay)
{
    FailingReader failing;
    failing.FailBytes(8900 * Sector, 9100 * Sector);
    {
        DeepRun run(m_image.Path());
        ASSERT_EQ(run.Scan(), ResultSuccess);
        EXPECT_EQ(run.Search().size(), 5u);
        EXPECT_EQ(run.Engine().Unread().Places(), 1u);
        EXPECT_GE(run.Engine().UnreadSectors(), 200u);
    }
    {
        DeepRun replayed(m_image.Path());
        ASSERT_EQ(replayed.Scan(), ResultSuccess);
        EXPECT_GE(replayed.Engine().UnreadSectors(), 200u) << "not forgotten by taking it as it is";
    }
    failing.Heal();
    DeepRun again(m_image.Path());
    again.Engine().ReadUnreadAgain();
    const std::size_t opened = failing.BytesRead();
    ASSERT_EQ(again.Scan(), ResultSuccess);
    EXPECT_LT(failing.BytesRead() - opened, Sectors * Sector / 10)
        << "those sectors, and what is measured of the picture in them";
    EXPECT_EQ(again.Search().size(), 6u);
    EXPECT_EQ(again.Engine().UnreadSectors(), 0u);
    EXPECT_FALSE(std::filesystem::exists(again.Engine().LogFolder() / ".unread"));
}

TEST_F(DeepScanTest, ASourceThatGoesAwayInterruptsTheScan)
{
    {
        DeepRun run(m_image.Path());
        run.Engine().SetCheckpointInterval(0);
        int reports = 0;
        EXPECT_EQ(run.Scan([&](const DeepProgress&) {
            if (++reports == 20) {
                std::filesystem::resize_file(m_image.Path(), 3000 * Sector);
            }
            return ResultSuccess;
        }),
                  ResultNotConnected);
        EXPECT_TRUE(run.Engine().StandsInLog());
    }
    EXPECT_TRUE(OpenLog()->Entries().empty()) << "not saved as complete";
    EXPECT_EQ(OpenLog()->KilledScans().size(), 1u);
}

TEST_F(DeepScanTest, RecordsThatCannotBeSavedAreCountedAndTheScanIsNotComplete)
{
    {
        DeepRun run(m_image.Path());
        const FileSizeLimit limit(2 * sizeof(FileRecord) + 100);
        ASSERT_EQ(run.Scan(), ResultSuccess) << "the scan goes on";
        EXPECT_EQ(run.Engine().Lost().records, 4u);
        EXPECT_EQ(run.Engine().Lost().why, 223);
        EXPECT_EQ(run.Search().size(), 2u);
    }
    EXPECT_TRUE(OpenLog()->Entries().empty());
}

TEST_F(DeepScanTest, ADeepScanOfADriveOpensItThreeTimes)
{
    // For the pass and all engines, for reading ahead, and for the stamp that is saved at its end.
    int opened = 0;
    const std::uint32_t number = DriveRegistry::Instance().NumberOf(m_image.Path());
    SetReaderDecorator([&](std::unique_ptr<IByteReader> reader) {
        ++opened;
        return reader;
    });
    const auto engine = RecoveryEngineFactory(OpenLog()).MakeEngineForPartition(number, 0, Sectors,
                                                                                1, ScanDepth::Deep);
    ASSERT_EQ(engine->Scan(nullptr), ResultSuccess);
    FileRecordList found;
    ASSERT_EQ(engine->SearchRecords(AllFilesPattern, found), 1);
    for (const FileRecord& record : found) {
        EXPECT_EQ(engine->RestoreRecord(&record, m_folder / "out", 0), ResultSuccess);
    }
    SetReaderDecorator({});
    DriveRegistry::Instance().Forget(number);
    EXPECT_EQ(found.size(), 6u);
    EXPECT_EQ(opened, 3);
}

TEST_F(DeepScanTest, ThePassGoesOnBehindUnreadableSectors)
{
    FailingReader failing;
    failing.FailSector(130);
    failing.FailBytes(8000 * Sector, 8600 * Sector);
    DeepRun run(m_image.Path());
    ASSERT_EQ(run.Scan(), ResultSuccess);
    std::vector<std::uint64_t> heads;
    for (const FileRecord& record : run.Search()) {
        heads.push_back(std::uint64_t{record.EntrySector});
    }
    std::sort(heads.begin(), heads.end());
    // The block in which sector 130 failed is classed whole, with what the block before had in its place: so the picture
    // of sector 5 shows up again 128 sectors further on.
    EXPECT_EQ(heads, (std::vector<std::uint64_t>{5, 127, 133, 4000, 9000, 10000, 15000}));
}

TEST(ReadPaceTest, OnlyASourceThatIsSlowAllTheTimeIsSlow)
{
    struct PaceCase
    {
        int usual, now, every;  // microseconds; one read in so many takes longer
        bool isSlow, isFast;
    };
    for (const PaceCase& row : {PaceCase{15, 15, 1, false, true},
                                {15, 1000000, 100, false, false},
                                {15, 300, 3, true, false},
                                {40, 40, 1, false, false},
                                {400, 400, 1, true, false}}) {
        ReadPace pace;
        EXPECT_FALSE(pace.IsSlow() || pace.IsFast()) << "nothing is known yet";
        for (int read = 0; read < 301; ++read) {
            pace.Add(std::chrono::microseconds(read % row.every == 0 ? row.now : row.usual), 1);
        }
        EXPECT_EQ(pace.IsSlow(), row.isSlow) << row.usual << " " << row.now;
        EXPECT_EQ(pace.IsFast(), row.isFast) << row.usual << " " << row.now;
    }
}

TEST_F(DeepScanTest, ReadingAheadAndLeavingOutBringTheSameBlocksAsReadingPlainly)
{
    FailingReader failing;
    failing.FailSector(7001);
    SectorSource plain;
    SectorSource source;
    SectorSource ahead;
    SectorSource closed;
    ASSERT_EQ(plain.OpenImage(m_image.Path()), ResultSuccess);
    ASSERT_EQ(source.OpenImage(m_image.Path()), ResultSuccess);
    ASSERT_EQ(ahead.OpenImage(m_image.Path()), ResultSuccess);
    for (std::uint64_t seed = 1; seed <= 8; ++seed) {
        const bool passesOver = seed > 2;
        BlockReader withThread(source, ahead, 512, ReadAhead::Always);
        BlockReader without(plain, closed, 512);
        std::uint64_t dice = seed;
        for (std::uint64_t lba = 0; lba < Sectors;) {
            const std::uint64_t count = std::min(BlockSectors, Sectors - lba);
            std::int32_t gotWith = 0;
            std::int32_t gotWithout = 0;
            dice = dice * 6364136223846793005 + 1442695040888963407;
            const auto right = without.Read(lba, count, Sectors, &gotWithout);
            // Only what can be read is ever passed over.
            const bool isPassedOver = passesOver && dice >> 61 < 5 &&
                                      gotWithout == static_cast<std::int32_t>(count) &&
                                      withThread.LeaveOut(lba, count);
            if (!isPassedOver) {
                const auto left = withThread.Read(lba, count, Sectors, &gotWith);
                ASSERT_EQ(gotWith, gotWithout) << lba;
                ASSERT_TRUE(std::equal(left.begin(), left.end(), right.begin(), right.end()))
                    << lba << " with " << seed;
                left[1] ^= 1;  // analysers repair records in place
                right[1] ^= 1;
            }
            lba += (dice >> 40) % 4 == 0 ? count + (dice >> 30) % 500 : count;
        }
    }
}

TEST_F(DeepScanTest, AConfigOfRandomBytesHarmsNothingOutsideTheLog)
{
    const std::filesystem::path root = ScanLogDirectory::DefaultRoot();
    std::filesystem::create_directories(root);
    const std::filesystem::path precious = m_folder / "precious";
    std::filesystem::create_directories(precious / "7");
    WriteFileBytes(precious / "7" / "letter", Bytes("'dear'"));
    const std::string home = (precious / "7").string();
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        ByteVector bytes = RandomBytes(seed * 37 % 5000, seed);
        // Some entries match the image and name a folder that must not be touched.
        if (seed % 2 == 0) {
            ScanLogEntry entry;
            entry.diskNumber = ImageDiskNumber;
            ASSERT_TRUE(SetImagePath(entry, m_image.Path()));
            ASSERT_TRUE(SetLogFolder(entry, seed % 4 == 0 ? home : seed % 6 == 0 ? "/" : ""));
            bytes.resize(8 + sizeof entry);
            std::memcpy(bytes.data() + 8, &entry, sizeof entry - seed % 100);
        }
        WriteFileBytes(root / "config", bytes);
        ScanLogDirectory log;
        std::shared_ptr<ScanSource> source;
        ASSERT_EQ(ScanSource::OpenImage(m_image.Path(), &source), ResultSuccess);
        ScanLogEntry found;
        EXPECT_FALSE(log.FindScan(*source, found));
        for (const ScanLogEntry& entry : log.Entries()) {
            (void)log.DeleteLog(LogFolderOf(entry));
        }
        (void)log.SaveProgress(source->Identity(), {}, log.BeginNewLog());
    }
    EXPECT_EQ(ReadFileBytes(precious / "7" / "letter"), Bytes("'dear'"));
}

TEST_F(DeepScanTest, ASaveThatStoppedBetweenItsStepsIsFinishedAtTheNextStart)
{
    {
        DeepRun run(m_image.Path());
        ASSERT_EQ(run.Scan(), ResultSuccess);
    }
    const std::filesystem::path root = ScanLogDirectory::DefaultRoot();
    std::filesystem::rename(root / "config", root / "config.tmp");
    EXPECT_TRUE(DeepRun(m_image.Path()).Engine().HasResumableScan());
}

TEST_F(DeepScanTest, ADriveIsGoneOnWithOnlyWhileItIsTheSameAndUnchanged)
{
    if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    FatOptions options;
    options.extra = {"-i", "11111111"};
    const std::filesystem::path disk = m_folder / "card";
    const std::uint32_t number = DriveRegistry::Instance().NumberOf(disk);
    const auto open = [&] {
        auto engine = RecoveryEngineFactory(OpenLog()).MakeEngineForPartition(
            number, 0, options.volumeBytes / 512, 1, ScanDepth::Deep);
        return std::unique_ptr<CProfessionalRecovery>(
            dynamic_cast<CProfessionalRecovery*>(engine.release()));
    };
    const FatCard card(disk, options);
    ASSERT_EQ(open()->Scan(nullptr), ResultSuccess);
    EXPECT_TRUE(open()->HasResumableScan());
    card.Put("new", Bytes("'one cluster less'"));
    EXPECT_FALSE(open()->HasResumableScan());

    ASSERT_EQ(open()->Scan(nullptr), ResultSuccess);
    EXPECT_TRUE(open()->HasResumableScan());
    options.extra = {"-i", "22222222"};
    FatCard(disk, options).Put("new", Bytes("'as full as the other card'"));
    EXPECT_FALSE(open()->HasResumableScan());
    DriveRegistry::Instance().Forget(number);
}

}  // namespace
