#include "tests/recovery/carving/CarveSupport.h"

#include "recovery/carving/CarveContext.h"

#include <gtest/gtest.h>

void PrintTo(const CarvedFile& file, std::ostream* out)
{
    *out << file.lba << '.' << file.extension << " of " << file.length << " bytes";
}

void ResetCarveContext()
{
    CarveContext& context = CarveContext::Instance();
    context.TsRunHead = 1;
    context.InsideMts = 0;
    context.TsRangeList.Clear();
    context.scanCallback = nullptr;
    context.callbackContext = nullptr;
}

CarveImage::CarveImage(std::uint64_t sectors, std::int32_t sectorSize)
    : m_image(m_folder / "image", sectors * static_cast<std::uint64_t>(sectorSize)),
      m_sectorSize(sectorSize),
      m_sectors(sectors)
{
    ResetCarveContext();
}

void CarveImage::Put(std::uint64_t lba, std::span<const std::uint8_t> bytes)
{
    m_image.PutAt(lba * static_cast<std::uint64_t>(m_sectorSize), bytes);
}

std::vector<CarvedFile> CarveImage::Carve(bool fresh)
{
    ResetCarveContext();
    const DataFolder data;  // store names of one minute are equal
    SectorSource source;
    CFileTypeRecovery carver(OpenLog());
    EXPECT_EQ(carver.OpenImageFile(m_image.Path(), 0), ResultSuccess);
    EXPECT_EQ(source.OpenImage(m_image.Path()), ResultSuccess);
    ByteVector sector(static_cast<std::size_t>(m_sectorSize));
    std::int64_t found = 0;
    std::int64_t step = 1;
    for (std::uint64_t lba = 0; lba < m_sectors; lba += static_cast<std::uint64_t>(step)) {
        std::int32_t got = 0;
        if (fresh) {
            EXPECT_EQ(source.OpenImage(m_image.Path()), ResultSuccess);
        }
        EXPECT_EQ(source.ReadSectors(sector.data(), 1, lba, m_sectorSize, &got), ResultSuccess);
        const CarveProgress progress = {lba, m_sectors, -1, 0};
        (void)carver.CarveAtSector(ByteView(std::span(sector)), lba, progress, source, m_sectorSize,
                                   step, found);
    }
    FileRecordList records;
    EXPECT_EQ(carver.ListChildren(nullptr, 0, records), ResultSuccess);
    EXPECT_EQ(static_cast<std::int64_t>(records.size()), found);
    std::vector<CarvedFile> files;
    for (const FileRecord& record : records) {
        const std::string name(record.NameText());
        EXPECT_EQ(name.substr(0, name.find('.')),
                  std::to_string(std::uint64_t{record.EntrySector}));
        files.push_back({record.EntrySector, name.substr(name.find('.') + 1), record.FileSize});
    }
    std::sort(files.begin(), files.end(),
              [](const CarvedFile& left, const CarvedFile& right) { return left.lba < right.lba; });
    return files;
}

CarvedHead CarveImage::Measure(std::uint64_t lba, ResultCode* outResult)
{
    SectorSource source;
    EXPECT_EQ(source.OpenImage(m_image.Path()), ResultSuccess);
    const auto size = static_cast<std::size_t>(m_sectorSize);
    const ByteVector sector = m_image.Read(lba * size, size);
    CarvedHead head;
    const ResultCode result = TrySignatureTable(
        ByteView(std::span(sector)), lba, {lba, m_sectors, -1, 0}, source, m_sectorSize, head);
    if (outResult != nullptr) {
        *outResult = result;
    }
    return result == ResultSuccess ? head : CarvedHead();
}

bool CarveImage::Verify(std::uint64_t lba, std::string_view extension)
{
    SectorSource source;
    EXPECT_EQ(source.OpenImage(m_image.Path()), ResultSuccess);
    const auto size = static_cast<std::size_t>(m_sectorSize);
    const ByteVector sector = m_image.Read(lba * size, size);
    return VerifyExtensionAtSector(ByteView(std::span(sector)), extension, source, m_sectorSize,
                                   lba);
}
