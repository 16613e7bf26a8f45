// A small NTFS volume built record by record, for what no driver would ever write. 512-byte sectors, one sector a cluster.
#pragma once

#include "recovery/metadata/NtfsRecordCodec.h"
#include "tests/support/TempFolder.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

// Attributes, as they stand in a record.
ByteVector
FileNameAttribute(std::uint32_t parent, std::u16string_view name, std::uint8_t space = 1);
ByteVector ResidentAttribute(std::uint32_t type, std::span<const std::uint8_t> value);
ByteVector RunsAttribute(std::uint32_t type, const RunList& runs, std::uint64_t realSize);
// Entries of an attribute list: each names an attribute type and a record.
ByteVector ListEntry(std::uint32_t type, std::uint64_t recordNumber);

class NtfsImage
{
public:
    static constexpr std::uint32_t MftCluster = 16;
    static constexpr std::uint32_t SectorSize = 512;
    static constexpr std::uint32_t RecordSize = 1024;

    // Record 0 names the table in one run; the root is record 5; the rest is empty.
    NtfsImage(std::uint32_t sectors, std::uint32_t records);

    // A FILE record of these attributes with its fixups; flags 0 is a deleted file, 3 a live folder.
    static ByteVector MakeRecord(std::uint32_t number,
                                 std::uint16_t flags,
                                 const std::vector<ByteVector>& attributes);
    // Puts one in its place.
    void Put(std::uint32_t number, std::uint16_t flags, const std::vector<ByteVector>& attributes);
    // Overwrites one 16-bit word of a record, after the fixups.
    void Poke(std::uint32_t number, std::size_t offset, std::uint16_t value);
    void PutBytes(std::uint32_t sector, std::span<const std::uint8_t> bytes);
    const ByteVector& Bytes() const { return m_bytes; }

private:
    ByteVector m_bytes;
};
