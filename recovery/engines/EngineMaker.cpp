#include "recovery/engines/EngineMaker.h"

#include "recovery/engines/RecoveryEngineFactory.h"

std::unique_ptr<IFileRecoveryParse> EngineMaker::Make(const EngineTarget& target,
                                                      ScanDepth depth,
                                                      const std::shared_ptr<ScanLogDirectory>& log,
                                                      ResultCode* outWhy)
{
    const RecoveryEngineFactory factory(log);
    if (target.imagePath.empty()) {
        return factory.MakeEngineForPartition(target.diskNumber, target.startLba,
                                              target.sectorCount, target.letter, depth, outWhy);
    }
    if (target.sectorCount == 0) {
        return factory.MakeEngineForImage(target.imagePath, target.letter, depth, outWhy);
    }
    std::shared_ptr<ScanSource> source;
    *outWhy =
        ScanSource::OpenImageRange(target.imagePath, target.startLba, target.sectorCount, &source);
    return *outWhy == ResultSuccess ? factory.MakeEngine(source, target.letter, depth, outWhy)
                                    : nullptr;
}
