#include "storage/RescuedImage.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

constexpr std::uint64_t LargestMapFile = 64 << 20;  // more than a million bad places

class MissingReader : public IByteReader
{
public:
    MissingReader(std::unique_ptr<IByteReader> image,
                  std::shared_ptr<const SectorRanges> missing,
                  std::uint32_t sectorSize)
        : m_image(std::move(image)), m_missing(std::move(missing)), m_sectorSize(sectorSize)
    {
    }
    ResultCode ReadAt(std::uint64_t position,
                      std::uint8_t* buffer,
                      std::size_t count,
                      std::size_t* outRead) override
    {
        const std::uint64_t first = position / m_sectorSize;
        const auto hole = m_missing->NextFrom(first);
        const std::uint64_t holeStart = hole ? hole->first * m_sectorSize : UINT64_MAX;
        *outRead = 0;
        if (holeStart <= position) {
            return ResultReadFault;
        }
        const std::uint64_t good = std::min<std::uint64_t>(count, holeStart - position);
        const ResultCode result = m_image->ReadAt(position, buffer, good, outRead);
        const bool hitsHole = result == ResultSuccess && *outRead == good && good < count;
        return hitsHole ? ResultReadFault : result;
    }

private:
    std::unique_ptr<IByteReader> m_image;
    std::shared_ptr<const SectorRanges> m_missing;
    std::uint32_t m_sectorSize;
};

}  // namespace

std::filesystem::path RescueMapFileOf(const std::filesystem::path& image)
{
    std::filesystem::path file = image;
    file += ".map";
    return file;
}

std::optional<RescueMap> ReadRescueMap(const std::filesystem::path& file)
{
    FileHandle handle;
    std::uint64_t size = 0;
    if (handle.OpenForReading(file) != ResultSuccess || !handle.IsRegularFile() ||
        handle.Size(&size) != ResultSuccess || size > LargestMapFile) {
        return std::nullopt;
    }
    std::string text(size, '\0');
    std::size_t got = 0;
    if (handle.ReadAt(0, text.data(), text.size(), &got) != ResultSuccess) {
        return std::nullopt;
    }
    text.resize(got);
    return RescueMap::Parse(text);
}

SectorRanges MissingSectorsOf(const std::filesystem::path& image, std::uint32_t sectorSize)
{
    SectorRanges missing;
    const std::optional<RescueMap> map = ReadRescueMap(RescueMapFileOf(image));
    std::uint64_t known = 0;  // before which all is looked at
    while (map && known < map->TotalBytes()) {
        const auto finished = map->FindForward(RescueStatus::Finished, known);
        const std::uint64_t end = finished ? finished->begin : map->TotalBytes();
        if (end > known) {
            const std::uint64_t first = known / sectorSize;
            missing.Add(first, (end - 1) / sectorSize + 1 - first);
        }
        known = finished ? finished->end : end;
    }
    return missing;
}

std::unique_ptr<IByteReader> MakeMissingReader(std::unique_ptr<IByteReader> image,
                                               std::shared_ptr<const SectorRanges> missing,
                                               std::uint32_t sectorSize)
{
    return std::make_unique<MissingReader>(std::move(image), std::move(missing), sectorSize);
}
