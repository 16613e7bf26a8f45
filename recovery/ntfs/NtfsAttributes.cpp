#include "recovery/ntfs/NtfsAttributes.h"

namespace {

constexpr std::size_t HeaderBytes = 8;  // type and length
// A walk that steps backward need not end by itself. No real record has more than a few dozen attributes.
constexpr std::uint32_t AttributeLimit = 4096;

}  // namespace

AttributeWalk::AttributeWalk(ByteView buffer,
                             std::uint64_t positionLimit,
                             const AttributeRules& walkRules)
    : record(buffer), limit(positionLimit), rules(walkRules), position(FirstAttributeOf(buffer))
{
}

bool AttributeWalk::Next()
{
    position += length;
    if (position < 0 || static_cast<std::uint64_t>(position) >= limit) {
        return false;
    }
    const auto at = static_cast<std::size_t>(position);
    if (!record.Covers(at, HeaderBytes) || (rules.shortLengths && ++shown >= AttributeLimit)) {
        return false;
    }
    type = record.U32(at);
    if (type == AttributeEnd || (type >= rules.firstFillType && type <= rules.lastFillType) ||
        (type == 0 && rules.zeroTypeEnds)) {
        return false;
    }
    length = rules.shortLengths ? std::int64_t{static_cast<std::int16_t>(record.U16(at + 4))}
                                : std::int64_t{record.U32(at + 4)};
    return length != 0;
}
