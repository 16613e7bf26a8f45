// Walking through the attributes of a FILE record, and the fields of its head. The walkers of the engines differ in
// small ways, and the differences decide what is found: each has its rules in the table below.
#pragma once

#include "platform/ByteView.h"
#include "platform/ResultCode.h"

#include <cstdint>

inline constexpr std::uint32_t AttributeAttributeList = 0x20;
inline constexpr std::uint32_t AttributeFileName = 0x30;
inline constexpr std::uint32_t AttributeData = 0x80;
inline constexpr std::uint32_t AttributeIndexAllocation =
    0xA0;                                                   // treated like data in attribute lists
inline constexpr std::uint32_t AttributeFill = 0xFDFDFDFD;  // a fill pattern
inline constexpr std::uint32_t AttributeEnd = 0xFFFFFFFF;

inline constexpr std::uint32_t RootRecordNumber = 5;
inline constexpr std::uint32_t BitmapRecordNumber = 6;
inline constexpr std::uint32_t FirstUserRecordNumber = 12;  // those below are system files

inline constexpr std::uint16_t RecordIsFolder = 0x0002;

// Offsets in an attribute.
inline constexpr std::size_t AttributeNonResident = 8;
inline constexpr std::size_t AttributeNameLength = 9;
inline constexpr std::size_t AttributeValueLength = 16;  // resident
inline constexpr std::size_t AttributeValueOffset = 20;  // resident
inline constexpr std::size_t AttributeRunListOffset = 32;
inline constexpr std::size_t AttributeRealSize = 48;

inline bool HasFileMagic(ByteView record)
{
    return record.Matches(0, "FILE");
}
inline std::uint16_t FirstAttributeOf(ByteView record)
{
    return record.U16(20);
}
inline std::uint16_t FlagsOf(ByteView record)
{
    return record.U16(22);
}
inline std::uint32_t BytesInUseOf(ByteView record)
{
    return record.U32(24);
}
// Only records of NTFS 3.1 carry it; nothing tests for that.
inline std::uint32_t RecordNumberOf(ByteView record)
{
    return record.U32(44);
}

// Where a walk ends, apart from its limit, AttributeEnd and a length of 0, which end every walk.
struct AttributeRules
{
    bool shortLengths;  // 16 bits and signed, so that a walk can step backward; else 32 bits
    bool zeroTypeEnds;  // type 0
    std::uint32_t firstFillType;  // and types from here
    std::uint32_t lastFillType;   // to here
};

inline constexpr AttributeRules RecordScanRules = {true, true, AttributeFill, AttributeEnd};
inline constexpr AttributeRules AncestorRules = {true, true, AttributeFill, AttributeFill};
inline constexpr AttributeRules RunReaderRules = {false, false, AttributeEnd, AttributeEnd};
inline constexpr AttributeRules ResidentReaderRules = {false, false, AttributeFill, AttributeFill};

// One pass over a record. An attribute that ends the walk is never shown, whatever its type; the same holds for one
// whose first 8 bytes do not lie in the buffer.
class AttributeWalk
{
public:
    // The view begins at the record and goes to the end of the buffer, not of the record: a walk may stray past it.
    // Positions from limit on are not looked at.
    AttributeWalk(ByteView record, std::uint64_t limit, const AttributeRules& rules);

    // Steps to the next attribute, at first to the first one. False at the end.
    bool Next();

    std::uint32_t Type() const { return m_type; }
    std::int64_t Length() const { return m_length; }
    // From the attribute to the end of the buffer.
    ByteView Attribute() const { return m_record.Sub(static_cast<std::size_t>(m_position)); }

private:
    ByteView m_record;
    std::uint64_t m_limit;
    AttributeRules m_rules;
    std::int64_t m_position;
    std::int64_t m_length = 0;
    std::uint32_t m_type = 0;
    std::uint32_t m_shown = 0;
};

// The data attribute of a repaired record: 0 and the value with its padding, ResultDataNotResident when it lies in runs
// or there is none, ResultInvalidParameter when it does not fit into a record. limit bounds the walk.
[[nodiscard]] ResultCode FindResidentData(ByteView record,
                                          std::uint32_t recordSize,
                                          std::uint64_t limit,
                                          ByteView& outValue);
