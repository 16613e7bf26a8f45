#include "recovery/RecordCopy.h"

#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <sys/resource.h>

namespace {

constexpr std::uint64_t PieceBytes = 512;

// A record of endless pieces, read as a cluster chain or as runs.
class PieceReader : public IRecordReader
{
public:
    explicit PieceReader(bool asksAboutErrors)
    {
        m_manners.answerReplacesWriteError = asksAboutErrors;
    }
    CopyManners Manners() const override { return m_manners; }
    ResultCode Begin(std::uint64_t, std::size_t* outBufferBytes) override
    {
        *outBufferBytes = PieceBytes;
        return ResultSuccess;
    }
    ResultCode Next(std::span<std::uint8_t> buffer, std::size_t* outBytes, bool*) override
    {
        std::memset(buffer.data(), 7, buffer.size());
        *outBytes = buffer.size();
        return ResultSuccess;
    }

private:
    CopyManners m_manners;
};

struct FullCase
{
    const char* name;
    rlim_t room;
    bool asksAboutErrors;
    ResultCode answerToError;
    ResultCode result;
    std::vector<std::pair<std::int32_t, ResultCode>> lastCalls;  // percent and error
};

constexpr ResultCode TooLarge = 223;

std::ostream& operator<<(std::ostream& out, const FullCase& one)
{
    return out << one.name;
}

struct Calls
{
    std::vector<std::pair<std::int32_t, ResultCode>> seen;
    ResultCode answerToError = ResultSuccess;

    static ResultCode OnFile(void* context,
                             std::int32_t percent,
                             std::int32_t,
                             ResultCode error,
                             const std::filesystem::path&)
    {
        auto& calls = *static_cast<Calls*>(context);
        calls.seen.emplace_back(percent, error);
        return error != ResultSuccess ? calls.answerToError : ResultSuccess;
    }
};

class FullDestinationTest : public testing::TestWithParam<FullCase>
{};

TEST_P(FullDestinationTest, EndsTheCopyWhateverTheCallbackAnswers)
{
    const FullCase& one = GetParam();
    const TempFolder folder;
    FileRecord record;
    record.FileSize = 100 * PieceBytes;
    PieceReader reader(one.asksAboutErrors);
    Calls calls;
    calls.answerToError = one.answerToError;
    {
        const FileSizeLimit limit(one.room);
        EXPECT_EQ(RestoreData(reader, record, folder / "file", &Calls::OnFile, &calls), one.result);
    }
    EXPECT_EQ(std::filesystem::file_size(folder / "file"), one.room) << "what was written stays";
    ASSERT_GE(calls.seen.size(), one.lastCalls.size());
    EXPECT_EQ(std::vector(calls.seen.end() - static_cast<std::ptrdiff_t>(one.lastCalls.size()),
                          calls.seen.end()),
              one.lastCalls);
    EXPECT_LE(calls.seen.size(), one.room / PieceBytes + 3);
}

INSTANTIATE_TEST_SUITE_P(
    Answers,
    FullDestinationTest,
    testing::Values(
        FullCase{
            "Zero", 4 * PieceBytes, true, 0, TooLarge, {{4, 0}, {4, TooLarge}, {100, TooLarge}}},
        // The piece that fits in part is told and passed over; the next one takes nothing.
        FullCase{"ZeroBehindAPart",
                 4 * PieceBytes + 100,
                 true,
                 0,
                 TooLarge,
                 {{4, TooLarge}, {4, TooLarge}, {100, TooLarge}}},
        FullCase{"Cancel",
                 4 * PieceBytes,
                 true,
                 ResultCancelled,
                 ResultCancelled,
                 {{4, 0}, {4, TooLarge}}},
        FullCase{"NotAsked", 4 * PieceBytes, false, 0, TooLarge, {{4, 0}, {100, TooLarge}}}),
    testing::PrintToStringParamName());

}  // namespace
