#include "tests/recovery/ntfs/NtfsImage.h"

#include <algorithm>
#include <cstring>

namespace {

template <typename Number>
void PutNumber(ByteVector& bytes, std::size_t at, Number value)
{
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

ByteVector Attribute(std::uint32_t type, bool nonResident, std::size_t size)
{
    ByteVector bytes((size + 7) / 8 * 8);
    PutNumber(bytes, 0, type);
    PutNumber(bytes, 4, static_cast<std::uint32_t>(bytes.size()));
    bytes[8] = nonResident ? 1 : 0;
    return bytes;
}

}  // namespace

ByteVector ResidentAttribute(std::uint32_t type, std::span<const std::uint8_t> value)
{
    ByteVector bytes = Attribute(type, false, 24 + value.size());
    PutNumber(bytes, 16, static_cast<std::uint32_t>(value.size()));
    PutNumber(bytes, 20, std::uint16_t{24});
    std::copy(value.begin(), value.end(), bytes.begin() + 24);
    return bytes;
}

ByteVector FileNameAttribute(std::uint32_t parent, std::u16string_view name, std::uint8_t space)
{
    ByteVector value(66 + 2 * name.size());
    PutNumber(value, 0, parent);
    PutNumber(value, 8, std::uint64_t{0x01D0000000000001});
    value[64] = static_cast<std::uint8_t>(name.size());
    value[65] = space;
    std::memcpy(value.data() + 66, name.data(), 2 * name.size());
    return ResidentAttribute(0x30, value);
}

ByteVector RunsAttribute(std::uint32_t type, const RunList& runs, std::uint64_t realSize)
{
    constexpr std::size_t RunBytes = 1 + 4 + 5;
    ByteVector bytes = Attribute(type, true, 64 + RunBytes * runs.size() + 1);
    PutNumber(bytes, 32, std::uint16_t{64});
    PutNumber(bytes, 48, realSize);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const std::size_t at = 64 + RunBytes * i;
        bytes[at] = 0x54;
        PutNumber(bytes, at + 1, static_cast<std::uint32_t>(runs[i].Length));
        std::memcpy(bytes.data() + at + 5, &runs[i].Offset, 5);
    }
    return bytes;
}

ByteVector ListEntry(std::uint32_t type, std::uint64_t recordNumber)
{
    ByteVector bytes(32);
    PutNumber(bytes, 0, type);
    PutNumber(bytes, 4, std::uint16_t{32});
    PutNumber(bytes, 16, recordNumber);
    return bytes;
}

NtfsImage::NtfsImage(std::uint32_t sectors, std::uint32_t records)
    : m_bytes(std::size_t{sectors} * SectorSize)
{
    std::memcpy(m_bytes.data() + 3, "NTFS    ", 8);
    PutNumber(m_bytes, 11, std::uint16_t{SectorSize});
    m_bytes[13] = 1;
    PutNumber(m_bytes, 40, std::uint64_t{sectors});
    PutNumber(m_bytes, 48, std::uint64_t{MftCluster});
    PutNumber(m_bytes, 510, std::uint16_t{0xAA55});
    Put(0, 1,
        {FileNameAttribute(5, u"$MFT"),
         RunsAttribute(0x80, {{std::uint64_t{records} * 2, MftCluster}},
                       std::uint64_t{records} * RecordSize)});
    Put(5, 3, {FileNameAttribute(5, u".")});
}

ByteVector NtfsImage::MakeRecord(std::uint32_t number,
                                 std::uint16_t flags,
                                 const std::vector<ByteVector>& attributes)
{
    ByteVector record(RecordSize);
    std::memcpy(record.data(), "FILE", 4);
    std::size_t at = 56;
    PutNumber(record, 20, static_cast<std::uint16_t>(at));
    PutNumber(record, 22, flags);
    PutNumber(record, 44, number);
    for (const ByteVector& attribute : attributes) {
        std::copy(attribute.begin(), attribute.end(), record.begin() + static_cast<long>(at));
        at += attribute.size();
    }
    PutNumber(record, at, std::uint32_t{0xFFFFFFFF});
    PutNumber(record, 24, static_cast<std::uint32_t>(at + 8));
    // What stood at the sector tails goes to the fixup words; tails hold the sequence number.
    constexpr std::uint16_t Sequence = 7;
    PutNumber(record, 48, Sequence);
    for (const std::size_t i : {std::size_t{0}, std::size_t{1}}) {
        const std::size_t tail = (i + 1) * SectorSize - 2;
        std::memcpy(record.data() + 50 + 2 * i, record.data() + tail, 2);
        PutNumber(record, tail, Sequence);
    }
    return record;
}

void NtfsImage::Put(std::uint32_t number,
                    std::uint16_t flags,
                    const std::vector<ByteVector>& attributes)
{
    PutBytes(MftCluster + 2 * number, MakeRecord(number, flags, attributes));
}

void NtfsImage::Poke(std::uint32_t number, std::size_t offset, std::uint16_t value)
{
    PutNumber(m_bytes, (MftCluster + 2 * std::size_t{number}) * SectorSize + offset, value);
}

void NtfsImage::PutBytes(std::uint32_t sector, std::span<const std::uint8_t> bytes)
{
    std::copy(bytes.begin(), bytes.end(),
              m_bytes.begin() + static_cast<long>(std::size_t{sector} * SectorSize));
}
