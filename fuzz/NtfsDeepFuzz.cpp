// FILE records through the deep NTFS analysis, with the same bytes as the source behind it, as a pass over the image would
// show them: whole in the block, or cut at its end.
#include "fuzz/ScratchImage.h"
#include "recovery/metadata/SectorValidators.h"
#include "recovery/ntfs/ProfessionalNtfsRecovery.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ScratchImage image(data, size);
    CProfessionalNtfsRecovery engine(OpenLog());
    (void)engine.OpenImageFile(image.Path(), 1001);
    (void)engine.OpenRecordStore("");
    ByteVector block(data, data + std::min<std::size_t>(size, 65536));
    for (std::size_t at = 0; at + 512 <= block.size(); at += 512) {
        const auto rest = std::span(block).subspan(at);
        // Not only sound ones: what the test of a record lets through is a matter of two bytes.
        if (ByteView(rest).Matches(0, "FILE")) {
            (void)engine.AddFileRecord(rest, at / 512);
        }
    }
    (void)engine.FinishAnalysis([] { return ResultSuccess; });
    AskAndRestore(engine);
    FileRecordList found;
    (void)engine.SearchRecords(AllFilesPattern, found);
    for (const FileRecord& record : found) {
        (void)engine.FirstDataSector(record);
    }
    return 0;
}
