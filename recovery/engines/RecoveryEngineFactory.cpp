#include "recovery/engines/RecoveryEngineFactory.h"

#include "recovery/deep/ProfessionalRecovery.h"
#include "recovery/engines/FastExtRecovery.h"
#include "recovery/fat/FastFatRecovery.h"
#include "recovery/metadata/FileSystemRecognition.h"
#include "recovery/ntfs/FastNtfsRecovery.h"
#include "storage/ByteReader.h"

#include <vector>

namespace {

using Engine = std::unique_ptr<IFileRecoveryParse>;

// What stands in the first 16 KB at a position, or the code that says why they could not be read whole.
ResultCode RecogniseAt(OpenedSource& source, std::uint64_t startLba, FileSystemKind* outKind)
{
    std::vector<std::uint8_t> start(RecognitionBytes);
    const ResultCode result =
        ReadWhole(*source.reader, startLba * source.sectorSize, start.data(), start.size());
    if (result == ResultSuccess) {
        *outKind = RecogniseFileSystem(ByteView(start));
    }
    return result;
}

Engine MakeQuickEngine(FileSystemKind kind)
{
    switch (kind) {
    case FileSystemKind::Fat:
        return std::make_unique<CFastFatRecovery>();
    case FileSystemKind::Ntfs:
        return std::make_unique<CFastNtfsRecovery>();
    case FileSystemKind::Ext:
        return std::make_unique<CFastExtRecovery>();
    case FileSystemKind::Unknown:
        break;
    }
    return nullptr;
}

FastEngineMaker QuickEngines(ScanDepth depth)
{
    if (depth == ScanDepth::Whole) {
        return {};
    }
    return {[](const std::filesystem::path& path, char16_t letter) {
                return RecoveryEngineFactory::Instance().MakeEngineForImage(path, letter,
                                                                            ScanDepth::Quick);
            },
            [](std::uint32_t diskNumber, std::uint64_t startLba, std::uint64_t sectorCount,
               char16_t letter) {
                return RecoveryEngineFactory::Instance().MakeEngineForPartition(
                    diskNumber, startLba, sectorCount, letter, ScanDepth::Quick);
            }};
}

// A deep scan works on any target, a quick one where the file system is known.
Engine MakeEngine(FileSystemKind kind, ScanDepth depth)
{
    return depth == ScanDepth::Quick ? MakeQuickEngine(kind)
                                     : std::make_unique<CProfessionalRecovery>(QuickEngines(depth));
}

}  // namespace

RecoveryEngineFactory& RecoveryEngineFactory::Instance()
{
    static RecoveryEngineFactory factory;
    return factory;
}

std::unique_ptr<IFileRecoveryParse>
RecoveryEngineFactory::MakeEngineForPartition(std::uint32_t diskNumber,
                                              std::uint64_t startLba,
                                              std::uint64_t sectorCount,
                                              char16_t driveLetter,
                                              ScanDepth depth,
                                              ResultCode* outWhy)
{
    OpenedSource source;
    FileSystemKind kind = FileSystemKind::Unknown;
    ResultCode why = OpenDriveSource(diskNumber, source);
    if (why == ResultSuccess) {
        why = RecogniseAt(source, startLba, &kind);
    }
    if (outWhy != nullptr) {
        *outWhy = why;
    }
    Engine engine;
    if (why == ResultSuccess) {
        engine = MakeEngine(kind, depth);
    }
    if (engine != nullptr) {
        // An engine that could not be opened finds nothing, and says so when it scans.
        (void)engine->OpenPartition(diskNumber, startLba, sectorCount, driveLetter);
    }
    return engine;
}

std::unique_ptr<IFileRecoveryParse>
RecoveryEngineFactory::MakeEngineForImage(const std::filesystem::path& filePath,
                                          char16_t driveLetter,
                                          ScanDepth depth,
                                          ResultCode* outWhy)
{
    OpenedSource source;
    FileSystemKind kind = FileSystemKind::Unknown;
    ResultCode why = OpenImageSource(filePath, source);
    if (why == ResultSuccess) {
        why = RecogniseAt(source, 0, &kind);
    }
    if (outWhy != nullptr) {
        *outWhy = why;
    }
    Engine engine;
    if (why == ResultSuccess) {
        engine = MakeEngine(kind, depth);
    }
    if (engine != nullptr) {
        (void)engine->OpenImageFile(filePath, driveLetter);  // as above
    }
    return engine;
}
