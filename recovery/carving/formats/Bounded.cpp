// The lengths of formats that have no end of their own.
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

namespace {

std::int64_t LengthToBoundary(std::int64_t budgetBytes)
{
    LengthScan scan(budgetBytes);
    while (scan.NextBlock()) {
    }
    return scan.Length();
}

}  // namespace

std::int64_t LengthBounded64M(const std::uint8_t*, std::int32_t)
{
    return LengthToBoundary(67'108'864);
}

std::int64_t LengthScanOnly128M(const std::uint8_t*, std::int32_t)
{
    return LengthToBoundary(134'217'728);
}

std::int64_t LengthBounded4G(const std::uint8_t*, std::int32_t)
{
    return LengthToBoundary(4'294'967'296);
}

std::int64_t LengthMkv(const std::uint8_t*, std::int32_t)
{
    return LengthToBoundary(68'719'476'736);
}
