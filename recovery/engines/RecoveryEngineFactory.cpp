#include "recovery/engines/RecoveryEngineFactory.h"

#include "recovery/deep/ProfessionalRecovery.h"
#include "recovery/engines/FastExtRecovery.h"
#include "recovery/fat/FastFatRecovery.h"
#include "recovery/metadata/FileSystemRecognition.h"
#include "recovery/ntfs/FastNtfsRecovery.h"

#include <utility>
#include <vector>

namespace {

using Engine = std::unique_ptr<CEngineBase>;
using Log = std::shared_ptr<ScanLogDirectory>;

Engine MakeQuickEngine(FileSystemKind kind, const Log& log)
{
    switch (kind) {
    case FileSystemKind::Fat:
        return std::make_unique<CFastFatRecovery>(log);
    case FileSystemKind::Ntfs:
        return std::make_unique<CFastNtfsRecovery>(log);
    case FileSystemKind::Ext:
        return std::make_unique<CFastExtRecovery>();
    case FileSystemKind::Unknown:
        break;
    }
    return nullptr;
}

FastEngineMaker QuickEngines(const Log& log)
{
    return [log](const std::shared_ptr<ScanSource>& source, char16_t letter) {
        return RecoveryEngineFactory(log).MakeEngine(source, letter, ScanDepth::Quick);
    };
}

// A deep scan works on any target, a quick one where the file system is known.
Engine MakeEngineOf(FileSystemKind kind, ScanDepth depth, const Log& log)
{
    return depth == ScanDepth::Quick
               ? MakeQuickEngine(kind, log)
               : std::make_unique<CProfessionalRecovery>(
                     log, QuickEngines(log),
                     depth == ScanDepth::Whole ? PassOver::AllSectors : PassOver::FreeSectors);
}

// Null, and why, for a target that could not be opened.
std::unique_ptr<IFileRecoveryParse> NotOpened(ResultCode why, ResultCode* outWhy)
{
    if (outWhy != nullptr) {
        *outWhy = why;
    }
    return nullptr;
}

}  // namespace

RecoveryEngineFactory::RecoveryEngineFactory(std::shared_ptr<ScanLogDirectory> log)
    : m_log(std::move(log))
{
}

std::unique_ptr<IFileRecoveryParse>
RecoveryEngineFactory::MakeEngine(const std::shared_ptr<ScanSource>& source,
                                  char16_t driveLetter,
                                  ScanDepth depth,
                                  ResultCode* outWhy) const
{
    std::vector<std::uint8_t> start(RecognitionBytes);
    const ResultCode why = source->ReadStart(start.data(), start.size());
    if (why != ResultSuccess) {
        return NotOpened(why, outWhy);
    }
    if (outWhy != nullptr) {
        *outWhy = ResultSuccess;
    }
    Engine engine = MakeEngineOf(RecogniseFileSystem(ByteView(start)), depth, m_log);
    if (engine != nullptr) {
        // An engine that could not be opened finds nothing, and says so when it scans.
        (void)engine->Open(source, driveLetter);
    }
    return engine;
}

std::unique_ptr<IFileRecoveryParse>
RecoveryEngineFactory::MakeEngineForPartition(std::uint32_t diskNumber,
                                              std::uint64_t startLba,
                                              std::uint64_t sectorCount,
                                              char16_t driveLetter,
                                              ScanDepth depth,
                                              ResultCode* outWhy) const
{
    std::shared_ptr<ScanSource> source;
    const ResultCode why = ScanSource::OpenDriveRange(diskNumber, startLba, sectorCount, &source);
    return why == ResultSuccess ? MakeEngine(source, driveLetter, depth, outWhy)
                                : NotOpened(why, outWhy);
}

std::unique_ptr<IFileRecoveryParse>
RecoveryEngineFactory::MakeEngineForImage(const std::filesystem::path& filePath,
                                          char16_t driveLetter,
                                          ScanDepth depth,
                                          ResultCode* outWhy) const
{
    std::shared_ptr<ScanSource> source;
    const ResultCode why = ScanSource::OpenImage(filePath, &source);
    return why == ResultSuccess ? MakeEngine(source, driveLetter, depth, outWhy)
                                : NotOpened(why, outWhy);
}
