#include "recovery/CheckpointFile.h"

#include "platform/ByteView.h"
#include "platform/FileHandle.h"
#include "platform/Folders.h"

#include <cstring>
#include <string_view>

namespace {

using namespace std::string_view_literals;

constexpr std::string_view Mark = "LVCHECK1"sv;
constexpr std::size_t LargestBlock = 65536;
constexpr std::size_t ChecksumBytes = 8;
constexpr std::size_t FixedBytes = Mark.size() + sizeof(CheckpointState) + ChecksumBytes;

// FNV-1a: it tells a torn or foreign file, not an attacker's, from which every field is checked where it is used.
std::uint64_t ChecksumOf(ByteView bytes)
{
    std::uint64_t sum = 0xCBF29CE484222325;
    for (const std::uint8_t byte : bytes.Span()) {
        sum = (sum ^ byte) * 0x100000001B3;
    }
    return sum;
}

}  // namespace

ResultCode WriteCheckpoint(const std::filesystem::path& logFolder, const Checkpoint& checkpoint)
{
    std::vector<std::uint8_t> bytes(FixedBytes + checkpoint.block.size());
    std::memcpy(bytes.data(), Mark.data(), Mark.size());
    std::memcpy(bytes.data() + Mark.size(), &checkpoint.state, sizeof checkpoint.state);
    if (!checkpoint.block.empty()) {
        std::memcpy(bytes.data() + Mark.size() + sizeof checkpoint.state, checkpoint.block.data(),
                    checkpoint.block.size());
    }
    const std::size_t end = bytes.size() - ChecksumBytes;
    const std::uint64_t sum = ChecksumOf({bytes.data(), end});
    std::memcpy(bytes.data() + end, &sum, sizeof sum);

    const std::filesystem::path temporary = logFolder / (std::string(CheckpointName) + ".tmp");
    FileHandle file;
    ResultCode result = file.OpenOrCreate(temporary);
    if (result == ResultSuccess) {
        result = file.Truncate(0);
    }
    if (result == ResultSuccess) {
        result = file.WriteAt(0, bytes.data(), bytes.size());
    }
    if (result == ResultSuccess) {
        result = file.SyncData();
    }
    file.Close();
    return result == ResultSuccess ? RenameFile(temporary, logFolder / CheckpointName) : result;
}

bool ReadCheckpoint(const std::filesystem::path& logFolder, Checkpoint& outCheckpoint)
{
    FileHandle file;
    std::vector<std::uint8_t> bytes(FixedBytes + LargestBlock);
    std::size_t got = 0;
    if (file.OpenForReading(logFolder / CheckpointName) != ResultSuccess || !file.IsRegularFile() ||
        file.ReadAt(0, bytes.data(), bytes.size(), &got) != ResultSuccess || got < FixedBytes) {
        return false;
    }
    const ByteView view(bytes.data(), got);
    const std::size_t end = got - ChecksumBytes;
    if (!view.Matches(0, Mark) || view.U64(end) != ChecksumOf(view.Sub(0, end))) {
        return false;
    }
    std::memcpy(&outCheckpoint.state, bytes.data() + Mark.size(), sizeof outCheckpoint.state);
    const ByteView block = view.Sub(Mark.size() + sizeof outCheckpoint.state, got - FixedBytes);
    outCheckpoint.block.assign(block.Span().begin(), block.Span().end());
    return true;
}

void RemoveCheckpoint(const std::filesystem::path& logFolder)
{
    // In this order: a journal alone means nothing. What stays of a complete scan is not looked at.
    (void)RemoveFile(logFolder / CheckpointName);
    (void)RemoveFile(logFolder / JournalName);
}
