// How directory sectors reach CProfessionalFatRecovery: which volume and cluster each belongs to, how a name that spans
// two sectors is put together, and what becomes of sectors that fit nowhere yet.
#include "recovery/fat/ProfessionalFatRecovery.h"
#include "recovery/metadata/FatGeometry.h"
#include "recovery/metadata/FileSystemRecognition.h"

#include <array>

namespace {

constexpr std::size_t BootBytes = 4096;

std::vector<std::uint8_t> Joined(const std::vector<std::uint8_t>& front, ByteView back)
{
    std::vector<std::uint8_t> bytes = front;
    bytes.insert(bytes.end(), back.Span().begin(), back.Span().end());
    return bytes;
}

}  // namespace

ResultCode CProfessionalFatRecovery::PrepareVolume()
{
    if (m_scanSource == nullptr) {
        return ResultInvalidHandle;
    }
    std::array<std::uint8_t, BootBytes> bytes = {};
    if (const ResultCode result = m_scanSource->ReadStart(bytes.data(), BootBytes)) {
        return result;
    }
    FatGeometry geometry;
    const ByteView boot = ByteView(bytes).Sub(0, 512);
    if (IsFatBootSector(boot) && ReadFatGeometry(boot, geometry) == ResultSuccess) {
        m_rootCluster = geometry.rootCluster;
        m_probe.Clear(m_rootCluster);
        m_volumes.AppendBootVolume({geometry.sectorsPerCluster, geometry.dataStart, m_startLba});
    }
    return ResultSuccess;
}

void CProfessionalFatRecovery::AddDirectoryStart(ByteView sector, std::uint64_t lba)
{
    DirectoryPlace place = {lba, FirstClusterOf(sector), {}};
    auto known = m_volumes.FindByCluster(lba, place.cluster);
    if (!known) {
        const DirectorySample sample = {place.cluster, lba};
        if (const auto derived = m_samples.DeriveVolume(sample, m_startLba)) {
            m_volumes.Append(*derived);
        }
        // The new volume need not hold this directory: the pair that made it was sorted apart.
        m_samples.Append(sample);
        known = m_volumes.FindByCluster(lba, place.cluster);
    }
    if (known) {
        place.volume = m_volumes.At(*known);
        PlacePendingFiles();
    }
    ParseAt(sector, place);
}

// Parses a buffer, and again with each stored sector that goes on with the name it broke off.
void CProfessionalFatRecovery::ParseAt(ByteView buffer, const DirectoryPlace& place)
{
    NameCarry carry = ParseDirectory(buffer, place);
    while (carry.Checksum != 0) {
        const std::vector<std::uint8_t>* stored = m_storedSectors.TakeContinuation(carry);
        if (stored == nullptr) {
            m_nameCarries.Add(std::move(carry));
            return;
        }
        const std::vector<std::uint8_t> joined = Joined(carry.Bytes, ByteView(*stored));
        carry = ParseDirectory(ByteView(joined), place);
    }
}

void CProfessionalFatRecovery::ParseWithContinuations(ByteView buffer, DirectoryPlace place)
{
    if (!place.volume.IsKnown()) {
        if (const auto found = m_volumes.FindByCluster(place.lba, place.cluster)) {
            place.volume = m_volumes.At(*found);
        }
    }
    ParseAt(buffer, place);
}

void CProfessionalFatRecovery::ParseCarried(const NameCarry& carry, ByteView sector)
{
    const std::vector<std::uint8_t> joined = Joined(carry.Bytes, sector);
    ParseWithContinuations(ByteView(joined), {carry.Lba, carry.Cluster, {}});
}

void CProfessionalFatRecovery::AddDirectorySector(ByteView sector, std::uint64_t lba)
{
    if (const auto carry = m_nameCarries.Take(sector, lba)) {
        ParseCarried(*carry, sector);
        return;
    }
    // A further sector of the cluster that was placed last. The first of the next cluster counts too, and this is asked
    // before exact alignment, so the records of its entries name the same folder.
    if (m_lastPlaced.volume.IsKnown() &&
        lba - m_lastPlaced.lba <= m_lastPlaced.volume.SectorsPerCluster) {
        ParseWithContinuations(sector, m_lastPlaced);
        return;
    }
    PlaceSectorByAlignment(sector, lba);
}

// A sector that does not begin with "." can be judged by its position only.
void CProfessionalFatRecovery::PlaceSectorByAlignment(ByteView sector, std::uint64_t lba)
{
    std::uint32_t cluster = 0;
    const FatVolume* volume = m_volumes.FindAligned(lba, &cluster);
    if (volume == nullptr) {
        m_storedSectors.Store(lba, sector);
        return;
    }
    m_lastPlaced = {lba, cluster, *volume};
    ParseWithContinuations(sector, m_lastPlaced);
}

ResultCode CProfessionalFatRecovery::ResolveStoredSectors(const WorkReport& report)
{
    m_lastResolved = {};
    for (const auto& [lba, stored] : m_storedSectors.Sectors()) {
        if (const ResultCode answer = report()) {
            return answer;
        }
        if (stored.Used) {
            continue;
        }
        const ByteView sector(stored.Buffer);
        if (const auto carry = m_nameCarries.Take(sector, lba)) {
            ParseCarried(*carry, sector);
        } else {
            ResolveByVolume(sector, lba);
        }
    }
    m_storedSectors.Clear();
    return ResultSuccess;
}

// Without any volume the sector is given up.
void CProfessionalFatRecovery::ResolveByVolume(ByteView sector, std::uint64_t lba)
{
    std::uint32_t cluster = 0;
    if (const FatVolume* aligned = m_volumes.FindAligned(lba, &cluster)) {
        m_lastResolved = {lba, cluster, *aligned};
        ParseWithContinuations(sector, {lba, cluster, {}});
        return;
    }
    if (m_lastResolved.volume.IsKnown()) {
        ParseWithContinuations(sector, {lba, m_lastResolved.cluster, m_lastResolved.volume});
        return;
    }
    const FatVolume* nearest = m_volumes.FindNearest(lba);
    if (nearest == nullptr) {
        return;
    }
    // The place comes out two clusters past the true one, because the two that are numbered before the data are not taken
    // off. It goes into the records, which are compared across versions.
    const std::uint64_t distance = lba - nearest->Base - nearest->DataStart;
    cluster = static_cast<std::uint32_t>(distance / nearest->SectorsPerCluster + 2);
    const std::uint32_t offset = cluster * nearest->SectorsPerCluster + nearest->DataStart;
    ParseWithContinuations(sector, {nearest->Base + offset, cluster, *nearest});
}
