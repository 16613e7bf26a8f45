// Rescues from a source that fails by a script, and the map that they keep.
#include "storage/RescueCopier.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <set>
#include <thread>

namespace {

constexpr std::uint32_t Sector = 512;

// Bad sectors fail what they lie in; slow ones hold it.
class ScriptedReader : public IByteReader
{
public:
    explicit ScriptedReader(ByteVector content) : m_content(std::move(content)) {}
    ResultCode ReadAt(std::uint64_t position,
                      std::uint8_t* buffer,
                      std::size_t count,
                      std::size_t* outRead) override
    {
        *outRead = 0;
        positions.push_back(position);
        if (positions.size() > goneAfter) {
            return ResultReadFault;
        }
        if (slow.contains(position / Sector)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1700));
        }
        const auto firstBad = bad.lower_bound(position / Sector);
        std::size_t good = std::min(count, m_content.size() - position);
        if (firstBad != bad.end() && *firstBad * Sector < position + good) {
            good = *firstBad * Sector - position;
            ++failed;
        }
        std::copy_n(m_content.begin() + static_cast<std::ptrdiff_t>(position), good, buffer);
        *outRead = good;
        goodBytes += good;
        return good == count ? ResultSuccess : ResultReadFault;
    }

    std::set<std::uint64_t> bad;
    std::set<std::uint64_t> slow;
    std::size_t goneAfter = SIZE_MAX;
    std::vector<std::uint64_t> positions;
    std::uint64_t goodBytes = 0;
    std::size_t failed = 0;

private:
    ByteVector m_content;
};

class RescueCopierTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(m_target.OpenOrCreate(m_folder / "image"), ResultSuccess); }

    ResultCode Run(const RescueCopier::Report& report = {}, std::uint32_t retries = 0)
    {
        EXPECT_EQ(m_target.Truncate(m_map.TotalBytes()), ResultSuccess);
        RescueCopier copier({&m_reader, 0, Sector, [this] { return m_isThere; }}, m_target, m_map,
                            m_folder / "map");
        return copier.Run(retries, report);
    }
    std::optional<RescueMap> StoredMap() const
    {
        const ByteVector bytes = ReadFileBytes(m_folder / "map");
        return RescueMap::Parse(std::string(bytes.begin(), bytes.end()));
    }
    void ExpectAllButTheBadSectors()
    {
        ByteVector expected = m_content;
        for (const std::uint64_t sector : m_reader.bad) {
            std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(sector * Sector), Sector, 0);
        }
        EXPECT_EQ(ReadFileBytes(m_folder / "image"), expected);
        const std::optional<RescueMap> stored = StoredMap();
        ASSERT_TRUE(stored.has_value());
        EXPECT_EQ(stored->BytesOf(RescueStatus::Bad), m_reader.bad.size() * Sector);
        EXPECT_EQ(stored->BytesOf(RescueStatus::Finished),
                  m_content.size() - m_reader.bad.size() * Sector);
        for (const std::uint64_t sector : m_reader.bad) {
            const auto block = stored->FindForward(RescueStatus::Bad, sector * Sector);
            EXPECT_TRUE(block && block->begin == sector * Sector) << sector;
        }
    }

    const ByteVector m_content = RandomBytes(8 * 1024 * 1024 + 3 * Sector, 11);
    TempFolder m_folder;
    FileHandle m_target;
    bool m_isThere = true;
    ScriptedReader m_reader{m_content};
    RescueMap m_map{m_content.size()};
};

TEST_F(RescueCopierTest, EverySectorThatCanBeReadComesAndNoneTwice)
{
    std::mt19937 dice(5);
    for (int i = 0; i < 30; ++i) {
        const std::uint64_t begin = dice() % (m_content.size() / Sector);
        for (std::uint64_t sector = begin; sector < begin + dice() % 40; ++sector) {
            m_reader.bad.insert(std::min(sector, m_content.size() / Sector - 1));
        }
    }
    m_reader.bad.insert({0, m_content.size() / Sector - 1});
    EXPECT_EQ(Run(), ResultSuccess);
    ExpectAllButTheBadSectors();
    EXPECT_EQ(m_reader.goodBytes, m_map.BytesOf(RescueStatus::Finished));
}

TEST_F(RescueCopierTest, GoodAreasComeBeforeTheBadOnesAreLookedInto)
{
    for (std::uint64_t sector = 2000; sector < 6000; ++sector) {
        m_reader.bad.insert(sector);
    }
    std::size_t failedUntilGoodIsThere = SIZE_MAX;
    EXPECT_EQ(Run([&](const RescueState& state) {
                  // All but what lies in the same pieces as the bad area's ends.
                  if (state.map.BytesOf(RescueStatus::Finished) + 512 * 1024 >
                      m_content.size() - m_reader.bad.size() * Sector) {
                      failedUntilGoodIsThere = std::min(failedUntilGoodIsThere, m_reader.failed);
                  }
                  return ResultSuccess;
              }),
              ResultSuccess);
    EXPECT_LE(failedUntilGoodIsThere, 12u);
    EXPECT_GT(m_reader.failed, 3000u);
    ExpectAllButTheBadSectors();
}

TEST_F(RescueCopierTest, StoppedAtAnyReadItGoesOnByTheMapThatWasSaved)
{
    for (const unsigned sector : {100U, 101U, 5000U, 5020U, 5021U, 9000U, 16386U}) {
        m_reader.bad.insert(sector);
    }
    int rounds = 0;
    ResultCode result = ResultCancelled;
    for (std::size_t reads = 1; result == ResultCancelled && rounds < 1000; ++rounds) {
        std::size_t left = reads++ % 50 + 1;
        result =
            Run([&](const RescueState&) { return --left == 0 ? ResultCancelled : ResultSuccess; });
        const std::optional<RescueMap> stored = StoredMap();
        ASSERT_TRUE(stored.has_value());
        m_map = *stored;
    }
    EXPECT_EQ(result, ResultSuccess);
    EXPECT_GT(rounds, 20);
    ExpectAllButTheBadSectors();
    EXPECT_EQ(m_reader.goodBytes, m_map.BytesOf(RescueStatus::Finished)) << "nothing is read again";
}

TEST_F(RescueCopierTest, ADeviceThatGoesAwayHasNoBadSectors)
{
    m_reader.goneAfter = 10;
    m_isThere = false;
    EXPECT_EQ(Run(), ResultNotConnected);
    EXPECT_EQ(m_reader.positions.size(), 11u);
    EXPECT_EQ(m_map.BytesOf(RescueStatus::Finished), m_reader.goodBytes);
    EXPECT_EQ(m_map.BytesOf(RescueStatus::NonTried), m_content.size() - m_reader.goodBytes);
    m_reader.goneAfter = SIZE_MAX;
    EXPECT_EQ(Run(), ResultSuccess);
    ExpectAllButTheBadSectors();
}

TEST_F(RescueCopierTest, AReadThatHangsIsToldAndACancelIsTakenBehindIt)
{
    m_reader.slow = {512};
    std::uint64_t told = 0;
    EXPECT_EQ(Run([&told](const RescueState& state) {
                  told = std::max(told, state.readSeconds);
                  return state.readSeconds >= 1 ? ResultCancelled : ResultSuccess;
              }),
              ResultCancelled);
    EXPECT_EQ(told, 1u);
    EXPECT_EQ(m_reader.positions.back(), 512u * Sector) << "no read follows it";
    EXPECT_EQ(StoredMap()->BytesOf(RescueStatus::Finished), m_reader.goodBytes);
}

TEST_F(RescueCopierTest, RetriesTakeWhatHasHealed)
{
    m_reader.bad = {77, 4000, 4001};
    std::uint32_t retry = 0;
    EXPECT_EQ(Run(
                  [&](const RescueState& state) {
                      if (state.map.phase == RescuePhase::Retrying) {
                          retry = std::max(retry, state.map.pass);
                          if (retry == 2) {
                              m_reader.bad.erase(4001);
                          }
                      }
                      return ResultSuccess;
                  },
                  3),
              ResultSuccess);
    EXPECT_EQ(retry, 3u);
    ExpectAllButTheBadSectors();
}

TEST(RescueMap, IsWhatAPlainListOfBytesIs)
{
    constexpr std::size_t Bytes = 300;
    constexpr std::string_view Letters = "?*/-+";
    std::mt19937 dice(3);
    RescueMap map(Bytes);
    std::string plain(Bytes, '?');
    for (int round = 0; round < 3000; ++round) {
        const std::size_t begin = dice() % Bytes;
        const std::size_t end = std::min<std::size_t>(begin + dice() % 40, Bytes);
        const char letter = Letters[dice() % 5];
        map.Set(begin, end, static_cast<RescueStatus>(letter));
        std::fill(plain.begin() + static_cast<std::ptrdiff_t>(begin),
                  plain.begin() + static_cast<std::ptrdiff_t>(end), letter);
        const char asked = Letters[dice() % 5];
        const auto status = static_cast<RescueStatus>(asked);
        const std::size_t from = dice() % Bytes;
        const auto forward = map.FindForward(status, from);
        const std::size_t first = plain.find(asked, from);
        ASSERT_EQ(forward.has_value(), first != std::string::npos);
        ASSERT_TRUE(!forward ||
                    (forward->begin == first &&
                     forward->end == std::min(plain.find_first_not_of(asked, first), Bytes)));
        const auto backward = map.FindBackward(status, from);
        const std::size_t last = from == 0 ? std::string::npos : plain.rfind(asked, from - 1);
        ASSERT_EQ(backward.has_value(), last != std::string::npos);
        ASSERT_TRUE(!backward || (backward->end == last + 1 &&
                                  (backward->begin == 0 || plain[backward->begin - 1] != asked)));
        ASSERT_EQ(map.BytesOf(status), std::count(plain.begin(), plain.end(), asked));
        const auto again = RescueMap::Parse(map.Text());
        ASSERT_TRUE(again && again->Text() == map.Text() && again->TotalBytes() == Bytes);
    }
}

TEST(RescueMap, TakesWholeSectorsAndShowsTheWorstOfEachPart)
{
    auto map = RescueMap::Parse("0x10 ? 1\n0 100 +\n100 20 -\n120 1928 +\n");
    ASSERT_TRUE(map.has_value());
    map->AlignTo(512);
    map->GrowTo(4096);
    EXPECT_EQ(map->position, 0u);
    EXPECT_EQ(map->BytesOf(RescueStatus::Bad), 512u);
    EXPECT_EQ(map->BadPlaces(), 1u);
    EXPECT_EQ(map->BytesOf(RescueStatus::NonTried), 2048u);
    EXPECT_EQ(map->Strip(4), "-+??");
    EXPECT_EQ(RescueMap().Strip(3), "+++");
}

TEST(RescueMap, OfAFileOnlyAWholeListIsTaken)
{
    for (const char* good : {"# a remark\n\n0x00000000     ?\n0 0x200 ?\n",
                             "0 + 2\n0x0 01000 +\n0x200 0x1 -", "5 F 9\n100 7 /\n"}) {
        EXPECT_TRUE(RescueMap::Parse(good).has_value()) << good;
    }
    for (const char* bad :
         {"", "# nothing\n", "0 ? 1\n", "0 x 1\n0 512 ?\n", "0 ? 1\n0 512 !\n", "0 ? 1\n0 0 ?\n",
          "0 ? 1\n0 512 ?\n513 5 ?\n", "0 ? 1\n0 512 ?\n511 5 ?\n", "0 ? 1\n0 512\n",
          "0 ? 1\n0 99999999999999999999 +\n", "0 ? 1\n0x3fffffffffffffff 0x4000000000000000 +\n",
          "0 ? 1\n-1 5 +\n", "0 ? 1\n0 09 +\n", "0 ? 1\n0 5 ++\n", "0 ? 1\n0 5 + 7\n"}) {
        EXPECT_FALSE(RescueMap::Parse(bad).has_value()) << bad;
    }
}

}  // namespace
