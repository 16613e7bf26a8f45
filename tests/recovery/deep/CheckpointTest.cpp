// Scans that are stopped and killed at any moment, again and again: once resumed, they end as one that nothing disturbed.
#include "tests/recovery/deep/DeepSupport.h"
#include "tests/support/Bytes.h"
#include "tests/support/FatCard.h"
#include "tests/support/Pictures.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr std::uint64_t Mebibyte = 1024 * 1024;
constexpr int Killed = 1;

// More by hand: LUMIVAULT_TORTURE_ROUNDS=200.
int Rounds()
{
    const char* const text = std::getenv("LUMIVAULT_TORTURE_ROUNDS");
    return text != nullptr ? std::atoi(text) : 6;
}

// Two FAT volumes without boot sectors, folders whose parents are gone, and an NTFS volume whose first sector is lost: none
// begins at sector 0, and no table tells of them.
class CheckpointTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
            GTEST_SKIP() << missing;
        }
        m_image.PutAt(0, RandomBytes(Mebibyte, 3));
        for (const std::uint64_t start : {2u, 14u}) {
            const FatCard card(
                m_folder / ("card" + std::to_string(start)),
                FatOptions{.fatBits = 16, .volumeBytes = 10 * Mebibyte, .extra = {}});
            Fill(card, start);
            m_image.PutAt(start * Mebibyte, ReadFileBytes(card.ImagePath()));
            m_image.PutAt(start * Mebibyte, ByteVector(512));
        }
        AddNtfs();
        const DataFolder own;
        DeepRun run(m_image.Path());
        const auto begin = std::chrono::steady_clock::now();
        ASSERT_EQ(run.Scan([this](const DeepProgress&) { return ++m_calls, ResultSuccess; }),
                  ResultSuccess);
        m_duration = std::chrono::steady_clock::now() - begin;
        m_expected = run.StoreBytes();
        ASSERT_GT(m_expected.at("Pro_Fat").size(), 20 * sizeof(FileRecord));
        ASSERT_GT(m_expected.at("File_Type").size(), 5 * sizeof(FileRecord));
        EXPECT_EQ(m_expected.at("Pro_Ntfs").size() > 10 * sizeof(FileRecord), m_hasNtfs);
    }

    static void Fill(const FatCard& card, std::uint64_t seed)
    {
        std::string folder;
        for (int depth = 0; depth < 4; ++depth) {
            folder += (depth == 0 ? "" : "/") + std::string("Folder ") + std::to_string(depth);
            card.MakeFolder(folder);
            for (int i = 0; i < 6; ++i) {
                const std::string name = folder + "/picture number " + std::to_string(i) + ".jpg";
                card.Put(name, MakeJpeg(160, 120, seed * 100 + static_cast<unsigned>(i + depth)));
            }
        }
        card.DeleteTree("Folder 0/Folder 1");
    }
    void AddNtfs()
    {
        if (!MissingTool({"mkntfs", "ntfscp"}).empty()) {
            return;  // the FAT volumes have to do
        }
        m_hasNtfs = true;
        const std::filesystem::path volume = m_folder / "ntfs";
        ImageFile(volume, 8 * Mebibyte);
        (void)MustRun({"mkntfs", "-F", "-Q", "-q", "-s", "512", "-p", "0", "-H", "255", "-S", "63",
                       volume.string()});
        for (unsigned i = 0; i < 12; ++i) {
            const std::string name = "sound " + std::to_string(i) + ".xyz";
            WriteFileBytes(m_folder / name, RandomBytes(3000 + i * 500, i));
            (void)MustRun(
                {"ntfscp", "-f", "-q", volume.string(), (m_folder / name).string(), name});
        }
        m_image.PutAt(26 * Mebibyte, ReadFileBytes(volume));
        m_image.PutAt(26 * Mebibyte, ByteVector(512));
    }

    std::uint64_t Dice(std::uint64_t limit)
    {
        m_dice = m_dice * 6364136223846793005 + 1442695040888963407;
        return (m_dice >> 33) % limit;
    }
    // A scan in a process of its own, which is killed after a while. 0 when it came to its end.
    int ScanInChild(std::chrono::microseconds patience)
    {
        const std::uint64_t interval = Dice(12);
        const pid_t child = ::fork();
        if (child == 0) {
            DeepRun run(m_image.Path());
            run.Engine().SetCheckpointInterval(interval);
            ::_exit(run.Scan() == ResultSuccess ? 0 : 3);
        }
        std::this_thread::sleep_for(patience);
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFSIGNALED(status) ? Killed : WEXITSTATUS(status);
    }
    void ExpectUndisturbed(int round)
    {
        DeepRun run(m_image.Path());
        ASSERT_TRUE(run.Engine().HasResumableScan());
        ASSERT_EQ(run.Scan(), ResultSuccess);
        for (const auto& [name, bytes] : m_expected) {
            EXPECT_EQ(run.StoreBytes().at(name) == bytes, true) << name << " of round " << round;
        }
        EXPECT_FALSE(std::filesystem::exists(run.Engine().LogFolder() / ".checkpoint"));
    }

    TempFolder m_folder;
    ImageFile m_image{m_folder / "disk.img", 36 * Mebibyte};
    std::map<std::string, ByteVector> m_expected;
    std::chrono::steady_clock::duration m_duration{};
    std::uint64_t m_calls = 0;
    bool m_hasNtfs = false;
    std::uint64_t m_dice = 20;
};

TEST_F(CheckpointTest, AScanThatIsKilledAgainAndAgainEndsAsOneThatNothingDisturbed)
{
    int kills = 0;
    for (int round = 0; round < Rounds(); ++round) {
        const DataFolder own;
        const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(m_duration);
        int end = Killed;
        // Checkpoints make it slower than the undisturbed one, so it is given longer each time.
        for (std::uint64_t factor = 2; end == Killed; ++factor) {
            const auto span = static_cast<std::uint64_t>(whole.count()) * factor;
            end = ScanInChild(std::chrono::microseconds(Dice(span) + 500));
            kills += end == Killed ? 1 : 0;
        }
        ASSERT_EQ(end, 0) << round;
        ExpectUndisturbed(round);
    }
    RecordProperty("kills", kills);
    EXPECT_GT(kills, 0);
}

TEST_F(CheckpointTest, AScanThatIsStoppedAgainAndAgainEndsAsOneThatNothingDisturbed)
{
    for (int round = 0; round < Rounds() * 2; ++round) {
        const DataFolder own;
        for (int stop = 0; stop < 3; ++stop) {
            DeepRun run(m_image.Path());
            std::uint64_t left = Dice(m_calls) + 2;
            const ResultCode result = run.Scan([&left](const DeepProgress&) {
                return --left == 0 || left > UINT64_MAX / 2 ? ResultCancelled : ResultSuccess;
            });
            EXPECT_TRUE(result == ResultCancelled || result == ResultSuccess);
        }
        ExpectUndisturbed(round);
    }
}

}  // namespace
