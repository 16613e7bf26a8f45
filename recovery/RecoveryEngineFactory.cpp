#include "recovery/RecoveryEngineFactory.h"

#include "recovery/FastExtRecovery.h"
#include "recovery/FileSystemRecognition.h"
#include "recovery/fat/FastFatRecovery.h"
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
                                              bool /*deep*/,
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
    Engine engine = why == ResultSuccess ? MakeQuickEngine(kind) : nullptr;
    if (engine != nullptr) {
        (void)engine->OpenPartition(diskNumber, startLba, sectorCount,
                                    driveLetter);  // its scan finds nothing then
    }
    return engine;
}

std::unique_ptr<IFileRecoveryParse> RecoveryEngineFactory::MakeEngineForImage(
    const std::filesystem::path& filePath, char16_t driveLetter, bool /*deep*/, ResultCode* outWhy)
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
    Engine engine = why == ResultSuccess ? MakeQuickEngine(kind) : nullptr;
    if (engine != nullptr) {
        (void)engine->OpenImageFile(filePath, driveLetter);  // its scan finds nothing then
    }
    return engine;
}
