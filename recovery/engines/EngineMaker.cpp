#include "recovery/engines/EngineMaker.h"

#include "recovery/engines/RecoveryEngineFactory.h"

std::unique_ptr<IFileRecoveryParse> EngineMaker::Make(const EngineTarget& target,
                                                      ScanDepth depth,
                                                      const std::shared_ptr<ScanLogDirectory>& log,
                                                      ResultCode* outWhy)
{
    const RecoveryEngineFactory factory(log);
    return target.imagePath.empty()
               ? factory.MakeEngineForPartition(target.diskNumber, target.startLba,
                                                target.sectorCount, target.letter, depth, outWhy)
               : factory.MakeEngineForImage(target.imagePath, target.letter, depth, outWhy);
}
