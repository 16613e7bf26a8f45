// An image that is carved as the deep pass does it.
#pragma once

#include "recovery/carving/FileTypeRecovery.h"
#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct CarvedFile
{
    std::uint64_t lba = 0;
    std::string extension;
    std::uint64_t length = 0;
    bool operator==(const CarvedFile&) const = default;
};
void PrintTo(const CarvedFile& file, std::ostream* out);

class CarveImage
{
public:
    explicit CarveImage(std::uint64_t sectors, std::int32_t sectorSize = 512);

    void Put(std::uint64_t lba, std::span<const std::uint8_t> bytes);
    // Every sector in turn, jumps followed; the context starts as in a new process. With fresh, each sector meets a
    // source opened anew, so that nothing read or searched before is remembered.
    std::vector<CarvedFile> Carve(bool fresh = false);
    // One head alone, measured by the table; None when it makes no file.
    CarvedHead Measure(std::uint64_t lba, ResultCode* outResult = nullptr);
    bool Verify(std::uint64_t lba, std::string_view extension);

    const std::filesystem::path& Path() const { return m_image.Path(); }

private:
    TempFolder m_folder;
    ImageFile m_image;
    std::int32_t m_sectorSize;
    std::uint64_t m_sectors;
};

// The context as a new process has it; callbacks are taken out.
void ResetCarveContext();
