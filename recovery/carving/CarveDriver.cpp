#include "recovery/carving/CarveDriver.h"

#include "platform/Text.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/DetectDispatch.h"

#include <limits>

namespace {

constexpr std::int32_t LargestSector = 65536;

// A size that no block can be counted in is refused: 0 divides by zero, above 64 KiB measuring would not move.
bool IsUsable(std::int32_t sectorSize)
{
    return sectorSize > 0 && sectorSize <= LargestSector;
}

std::int32_t SizeOf(ByteView sector)
{
    constexpr auto Largest = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(sector.Size() < Largest ? sector.Size() : Largest);
}

const SignatureEntry* FirstRowOf(FileTypeId typeId)
{
    for (const SignatureEntry& row : SignatureTable()) {
        if (row.typeId == typeId) {
            return &row;
        }
    }
    return nullptr;
}

const SignatureEntry* FirstRowOf(std::string_view extension)
{
    for (const SignatureEntry& row : SignatureTable()) {
        if (row.typeId != FileTypeId::None && EqualIgnoringAsciiCase(row.extension, extension)) {
            return &row;
        }
    }
    return nullptr;
}

void Point(CarveContext& context, SectorSource& source, std::int32_t sectorSize, std::uint64_t lba)
{
    context.sectorSize = sectorSize;
    context.startLba = lba;
    context.currentLba = lba;
    context.source = &source;
}

}  // namespace

ResultCode TrySignatureTable(ByteView sector,
                             std::uint64_t lba,
                             const CarveProgress& progress,
                             SectorSource& source,
                             std::int32_t sectorSize,
                             CarvedHead& outHead)
{
    if (!IsUsable(sectorSize)) {
        return ResultInvalidParameter;
    }
    CarveContext& context = CarveContext::Instance();
    Point(context, source, sectorSize, lba);
    context.sectorsDone = progress.sectorsDone;
    context.sectorsTotal = progress.sectorsTotal;
    context.secondsLeft = progress.secondsLeft;
    context.filesFound = progress.filesFound;
    // The detectors see the two flags as the call before left them.
    const TableHit hit = FindHead(sector.Data(), SizeOf(sector));
    context.PassOverSectors();
    if (hit.row == nullptr || hit.row->length == nullptr) {
        return ResultInvalidParameter;
    }
    // The first row of the type, so that every picture of one kind gets the same extension.
    const SignatureEntry* row = FirstRowOf(hit.typeId);
    if (row == nullptr || row->length == nullptr) {
        return ResultInvalidParameter;
    }
    if (hit.typeId != FileTypeId::Ts) {
        context.TsRunHead = 0;
    }
    if (hit.typeId == FileTypeId::Mts) {
        context.InsideMts = 1;
    }
    outHead.name =
        std::to_string(static_cast<std::int64_t>(lba)).append(1, '.').append(row->extension);
    outHead.typeId = hit.typeId;
    outHead.lengthEnd = row->lengthEnd;
    context.lastCallbackResult = ResultSuccess;
    // While a transport stream is measured, some heads of such are taken for its own.
    context.freeStretch.Clear();
    if (context.TsRunHead == 0 && context.InsideMts == 0) {
        context.freeStretch.Begin(lba + 1);
    }
    outHead.lengthBytes = row->length(sector.Data(), SizeOf(sector));
    // Any other answer of the callback has cut the measuring short, but the file counts.
    return IsStop(context.lastCallbackResult) ? ResultCancelled : ResultSuccess;
}

bool VerifyExtensionAtSector(ByteView sector,
                             std::string_view extension,
                             SectorSource& source,
                             std::int32_t sectorSize,
                             std::uint64_t lba)
{
    const SignatureEntry* row = FirstRowOf(extension);
    if (row == nullptr) {
        return true;
    }
    CarveContext& context = CarveContext::Instance();
    Point(context, source, sectorSize, lba);
    context.TsRunHead = 0;
    return row->detect(sector.Data(), SizeOf(sector)) == row->typeId;
}
