// ts: packets of 188 bytes, each opening with the sync byte 0x47. mts: the same packets, a 4-byte time stamp before
// each; known by its program association table.
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::size_t PacketBytes = 188;
constexpr std::uint8_t SyncByte = 0x47;
constexpr std::int32_t ProbeBytes = 4096;
constexpr std::size_t ProbePackets = 22;
constexpr std::int32_t SmallestMtsSize = 16;
constexpr std::int64_t Budget = 68'719'476'736;
constexpr std::string_view ProgramTable = "\x00\x00\xB0\x11\x00\x00\xC1\x00"sv;

// A sync byte at each of count packets from the view's start.
bool HasPackets(ByteView bytes, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (bytes.U8(i * PacketBytes) != SyncByte) {
            return false;
        }
    }
    return true;
}

// The stream runs on from the sector before. Also said when that cannot be read: there is no head then.
bool RunsOnFromBefore(CarveContext& context)
{
    const ByteView before = context.ReadSectors(context.currentLba - 1, 1);
    for (std::size_t back = PacketBytes; back <= before.Size(); back += PacketBytes) {
        if (before.U8(before.Size() - back) == SyncByte) {
            return true;
        }
    }
    return before.Empty();
}

}  // namespace

FileTypeId DetectTs(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    const bool named = sector.U8(1) != 0 || sector.U8(2) != 0 || sector.U8(3) != 0;
    if (sector.U8(0) != SyncByte || !sector.Covers(0, PacketBytes) || !named) {
        return FileTypeId::None;
    }
    // A packet that would begin right after the sector counts as one without a sync byte.
    if (!HasPackets(sector, sector.Size() / PacketBytes + 1)) {
        return FileTypeId::None;
    }
    CarveContext& context = CarveContext::Instance();
    const std::int32_t probeSectors = context.sectorSize > 0 ? ProbeBytes / context.sectorSize : 0;
    const ByteView probe = context.ReadSectors(context.currentLba, probeSectors);
    if (!HasPackets(probe, ProbePackets)) {
        return FileTypeId::None;
    }
    const bool insideStream =
        context.TsRunHead != 0 &&
        (RunsOnFromBefore(context) || context.TsRangeList.Contains(context.startLba));
    return insideStream ? FileTypeId::None : FileTypeId::Ts;
}

std::int64_t LengthTs(const std::uint8_t*, std::int32_t)
{
    CarveContext& context = CarveContext::Instance();
    const std::int64_t sectorSize = context.sectorSize;
    constexpr std::int64_t Packet = PacketBytes;
    std::int64_t phase = sectorSize % Packet;
    std::int64_t run = sectorSize - phase;  // bytes of good packets
    bool broken = false;
    LengthScan scan(Budget);
    while (scan.NextBlock()) {
        if (broken) {
            continue;  // the scan goes on to its boundary all the same
        }
        // The packet that straddles the block's start, or begins there, counts untested.
        run += Packet;
        const std::int64_t first = Packet - phase;
        const std::int64_t rest = static_cast<std::int64_t>(scan.Block().Size()) - first;
        for (std::int64_t i = 0; i < rest / Packet && !broken; ++i) {
            broken = scan.Block().U8(static_cast<std::size_t>(first + i * Packet)) != SyncByte;
            run += broken ? 0 : Packet;
        }
        phase = rest % Packet;
    }
    const std::int64_t length = run != 0 && run < scan.Length() ? run : scan.Length();
    const std::int64_t sectors = (length + sectorSize - 1) / sectorSize;
    context.TsRangeList.Add(context.startLba,
                            context.startLba + static_cast<std::uint64_t>(sectors) - 1);
    return length;
}

FileTypeId DetectMts(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestMtsSize || !sector.Matches(8, ProgramTable)) {
        return FileTypeId::None;
    }
    // A stream repeats its table; only one with the time stamp 0 is sure to open another stream.
    const bool hit = sector.U32(0) == 0 || CarveContext::Instance().InsideMts == 0;
    return hit ? FileTypeId::Mts : FileTypeId::None;
}
