// Recognises the file system in a target's first 16 KB and makes the engine that fits, opened.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/ScanDepth.h"
#include "recovery/ScanLogDirectory.h"
#include "storage/ScanSource.h"

#include <cstdint>
#include <filesystem>
#include <memory>

// Any thread may call it. The engines keep the log that it was given.
class RecoveryEngineFactory
{
public:
    explicit RecoveryEngineFactory(std::shared_ptr<ScanLogDirectory> log);

    // An opened engine, or null: the target cannot be opened, its first 16384 bytes cannot be read whole, or a quick
    // engine is asked for and the file system is not known. outWhy, when given, tells which: the read's result
    // code, or 0 in the last case.
    std::unique_ptr<IFileRecoveryParse> MakeEngine(const std::shared_ptr<ScanSource>& source,
                                                   char16_t driveLetter,
                                                   ScanDepth depth,
                                                   ResultCode* outWhy = nullptr) const;
    // The same over a source that they open.
    std::unique_ptr<IFileRecoveryParse> MakeEngineForPartition(std::uint32_t diskNumber,
                                                               std::uint64_t startLba,
                                                               std::uint64_t sectorCount,
                                                               char16_t driveLetter,
                                                               ScanDepth depth,
                                                               ResultCode* outWhy = nullptr) const;
    std::unique_ptr<IFileRecoveryParse> MakeEngineForImage(const std::filesystem::path& filePath,
                                                           char16_t driveLetter,
                                                           ScanDepth depth,
                                                           ResultCode* outWhy = nullptr) const;

private:
    std::shared_ptr<ScanLogDirectory> m_log;
};
