#include "recovery/metadata/NtfsRecordCodec.h"

#include <array>
#include <cstring>

namespace {

constexpr std::size_t FixupWords = 50;
constexpr std::size_t RunListOffset = 32;
constexpr std::size_t LargestField = 7;  // bytes of a length or an offset

// A negative offset is put together from pieces: the lower bytes in 32 bits with their sign there, the last one in
// 64. Up to four bytes that is the plain value. With more, bytes 4 and 5 are shifted out and byte 3 counts as signed.
std::int64_t OffsetOf(ByteView field)
{
    const std::size_t count = field.Size();
    if (count == 0) {
        return 0;
    }
    const std::uint8_t last = field.U8(count - 1);
    if ((last & 0x80) == 0) {
        return static_cast<std::int64_t>(LittleEndian(field));
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i + 1 < count && i < sizeof(std::uint32_t); ++i) {
        const auto piece = static_cast<std::int32_t>(std::uint32_t{field.U8(i)} << 8 * i);
        value += static_cast<std::uint64_t>(std::int64_t{piece});
    }
    const std::int64_t signedLast = std::int64_t{last} - 256;  // its top bit is set
    value += static_cast<std::uint64_t>(signedLast) << 8 * (count - 1);
    return static_cast<std::int64_t>(value);
}

}  // namespace

std::uint64_t LittleEndian(ByteView field)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < field.Size(); ++i) {
        value |= std::uint64_t{field.U8(i)} << 8 * i;
    }
    return value;
}

std::optional<RunEntry> ReadRunEntry(ByteView list, std::size_t at, std::size_t largestField)
{
    const std::uint8_t header = list.U8(at);
    const std::size_t lengthBytes = header & 0x0F;
    const std::size_t offsetBytes = header >> 4;
    if (header == 0 || lengthBytes > largestField || offsetBytes > largestField ||
        !list.Covers(at + 1, lengthBytes + offsetBytes)) {
        return std::nullopt;
    }
    return RunEntry{list.Sub(at + 1, lengthBytes), list.Sub(at + 1 + lengthBytes, offsetBytes)};
}

ResultCode NtfsRecordCodec::SetSectorSize(std::uint32_t bytesPerSector)
{
    SectorSize = bytesPerSector;
    FixupCount = bytesPerSector == 512 ? 2 : 1;
    return ResultSuccess;
}

ResultCode NtfsRecordCodec::ApplyFixups(std::span<std::uint8_t> record) const
{
    std::array<std::uint16_t, 2> words = {};
    const ByteView view(record);
    const bool isRecord = view.U8(0) != 0;
    for (std::size_t i = 0; i < FixupCount; ++i) {
        words[i] = isRecord ? view.U16(FixupWords + 2 * i) : std::uint16_t{0};
    }
    for (std::size_t i = 0; i < FixupCount; ++i) {
        const std::size_t tail = (i + 1) * SectorSize - sizeof words[i];
        if (view.Covers(tail, sizeof words[i])) {
            std::memcpy(record.data() + tail, &words[i], sizeof words[i]);
        }
    }
    return isRecord ? ResultSuccess : ResultNoFileRecord;
}

void NtfsRecordCodec::DecodeRunList(ByteView attribute, RunList& outRuns) const
{
    if (!attribute.Covers(RunListOffset, sizeof(std::uint16_t))) {
        return;
    }
    const std::uint32_t length = attribute.U32(4);
    std::size_t at = attribute.U16(RunListOffset);
    if (length >= SectorSize) {
        return;
    }
    while (at < length && attribute.Covers(at, 1) && outRuns.size() < LongestRunList) {
        const std::optional<RunEntry> entry = ReadRunEntry(attribute, at, LargestField);
        if (!entry) {
            return;
        }
        NtfsRun run;
        run.Length = LittleEndian(entry->length) & 0xFFFFFFFF;
        run.Offset = OffsetOf(entry->offset);
        outRuns.push_back(run);
        at += entry->Size();
    }
}
