// Recognises the file system in a target's first 16 KB and makes the engine that fits, opened.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/ScanDepth.h"

#include <cstdint>
#include <filesystem>
#include <memory>

// One object for the process, made on first use, not locked: one worker thread at a time calls it.
class RecoveryEngineFactory
{
public:
    static RecoveryEngineFactory& Instance();

    // An opened engine, or null: the target cannot be opened, its first 16384 bytes cannot be read whole, or a quick
    // engine is asked for and the file system is not known. outWhy, when given, tells which: the read's result
    // code, or 0 in the last case.
    std::unique_ptr<IFileRecoveryParse> MakeEngineForPartition(std::uint32_t diskNumber,
                                                               std::uint64_t startLba,
                                                               std::uint64_t sectorCount,
                                                               char16_t driveLetter,
                                                               ScanDepth depth,
                                                               ResultCode* outWhy = nullptr);
    std::unique_ptr<IFileRecoveryParse> MakeEngineForImage(const std::filesystem::path& filePath,
                                                           char16_t driveLetter,
                                                           ScanDepth depth,
                                                           ResultCode* outWhy = nullptr);
};
