#include "recovery/metadata/NtfsAttributes.h"

#include "recovery/metadata/NtfsRecordCodec.h"

namespace {

constexpr std::size_t HeaderBytes = 8;  // type and length
// A walk that steps backward need not end by itself. No real record has more than a few dozen attributes.
constexpr std::uint32_t AttributeLimit = 4096;

}  // namespace

AttributeWalk::AttributeWalk(ByteView buffer,
                             std::uint64_t positionLimit,
                             const AttributeRules& walkRules)
    : m_record(buffer),
      m_limit(positionLimit),
      m_rules(walkRules),
      m_position(FirstAttributeOf(buffer))
{
}

bool AttributeWalk::Next()
{
    m_position += m_length;
    if (m_position < 0 || static_cast<std::uint64_t>(m_position) >= m_limit) {
        return false;
    }
    const auto at = static_cast<std::size_t>(m_position);
    if (!m_record.Covers(at, HeaderBytes) ||
        (m_rules.shortLengths && ++m_shown >= AttributeLimit)) {
        return false;
    }
    m_type = m_record.U32(at);
    if (m_type == AttributeEnd ||
        (m_type >= m_rules.firstFillType && m_type <= m_rules.lastFillType) ||
        (m_type == 0 && m_rules.zeroTypeEnds)) {
        return false;
    }
    m_length = m_rules.shortLengths ? std::int64_t{static_cast<std::int16_t>(m_record.U16(at + 4))}
                                    : std::int64_t{m_record.U32(at + 4)};
    return m_length != 0;
}

ResultCode
FindResidentData(ByteView record, std::uint32_t recordSize, std::uint64_t limit, ByteView& outValue)
{
    AttributeWalk walk(record, limit, ResidentReaderRules);
    while (walk.Next()) {
        if (walk.Type() != AttributeData) {
            continue;
        }
        const ByteView attribute = walk.Attribute();
        if (attribute.U8(AttributeNonResident) != 0 ||
            !attribute.Covers(AttributeValueOffset, sizeof(std::uint16_t))) {
            return ResultDataNotResident;
        }
        const std::uint32_t valueOffset = attribute.U16(AttributeValueOffset);
        // The padding after the value belongs to it. An offset past the end wraps and is too long.
        const std::uint32_t size = attribute.U32(4) - valueOffset;
        if (size >= recordSize) {
            return ResultInvalidParameter;
        }
        if (!attribute.Covers(valueOffset, size)) {
            return ResultDataNotResident;
        }
        outValue = attribute.Sub(valueOffset, size);
        return ResultSuccess;
    }
    return ResultDataNotResident;
}
