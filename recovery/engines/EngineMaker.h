// How a scan gets its engine. What stands behind it can be put in its place for tests.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/ScanDepth.h"

#include <cstdint>
#include <filesystem>
#include <memory>

class ScanLogDirectory;

// A range of a drive in its own sectors, an image file, or a range of one in sectors of 512 bytes.
struct EngineTarget
{
    std::filesystem::path imagePath;  // empty for a drive
    std::uint32_t diskNumber = 0;
    std::uint64_t startLba = 0;
    std::uint64_t sectorCount = 0;  // of an image 0: all of it
    char16_t letter = 0;            // what the records carry
};

class IEngineMaker
{
public:
    IEngineMaker() = default;
    IEngineMaker(const IEngineMaker&) = delete;
    IEngineMaker& operator=(const IEngineMaker&) = delete;
    virtual ~IEngineMaker() = default;

    // An opened engine, whose stores go into the log; or null: *outWhy then is the result code of the opening, or 0 when a
    // quick engine is asked for and the file system is not known.
    virtual std::unique_ptr<IFileRecoveryParse> Make(const EngineTarget& target,
                                                     ScanDepth depth,
                                                     const std::shared_ptr<ScanLogDirectory>& log,
                                                     ResultCode* outWhy) = 0;
};

// The engines of RecoveryEngineFactory.
class EngineMaker : public IEngineMaker
{
public:
    std::unique_ptr<IFileRecoveryParse> Make(const EngineTarget& target,
                                             ScanDepth depth,
                                             const std::shared_ptr<ScanLogDirectory>& log,
                                             ResultCode* outWhy) override;
};
