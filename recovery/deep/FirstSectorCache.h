// Where the data of found files begins. To tell it takes a read of the source for an NTFS record, so the answers are
// kept with the scan: a second search reads nothing.
#pragma once

#include "recovery/FileRecord.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <tuple>
#include <unordered_map>

// One deep engine owns it. What it keeps holds as long as the source does.
class FirstSectorCache
{
public:
    using Find = std::function<std::optional<std::uint64_t>(const FileRecord& record)>;

    // The absolute sector of a record's first data, found once; none when it cannot be told.
    std::optional<std::uint64_t> Of(const FileRecord& record, const Find& find)
    {
        // All that the answer depends on. By value: a reference to a field of a packed record may be misaligned.
        const std::uint32_t engineKind = record.EngineKind;
        const std::uint64_t entrySector = record.EntrySector;
        const std::uint64_t partitionStart = record.PartitionStart;
        const std::uint32_t clusterBytes = record.ClusterBytes;
        const Key key = {engineKind, entrySector, partitionStart, clusterBytes};
        const auto [known, isNew] = m_known.try_emplace(key);
        if (isNew) {
            known->second = find(record);
        }
        return known->second;
    }

private:
    using Key = std::tuple<std::uint32_t, std::uint64_t, std::uint64_t, std::uint32_t>;
    struct Hash
    {
        std::size_t operator()(const Key& key) const
        {
            constexpr std::uint64_t Spread = 0x9E3779B97F4A7C15;
            return static_cast<std::size_t>(
                (std::get<1>(key) * Spread) ^
                (std::get<2>(key) + std::get<3>(key) + std::get<0>(key)));
        }
    };

    std::unordered_map<Key, std::optional<std::uint64_t>, Hash> m_known;
};
