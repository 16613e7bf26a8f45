// What the windows and their tasks share: the targets that are listed, what was found on them, and what is ticked.
//
// User-interface thread, but for what a task is told to touch while its modal window keeps the user from changing it: results
// in the search, selection and restoreFolder in the restore.
#pragma once

#include "app/tasks/EngineTurns.h"
#include "results/SelectionMap.h"
#include "session/Destination.h"
#include "session/Session.h"
#include "session/TargetList.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// A row of the disk list: a partition, a gap, an image file, or a partition or gap of one.
struct RecoveryTarget
{
    std::optional<TargetRow> volume;  // nothing for an image
    std::filesystem::path imagePath;  // empty for a volume
    char16_t imageId = 0;
    std::string imageFileSystem;          // of an image that is one volume, as far as it is known
    std::shared_ptr<ScanSession> engine;  // null until it is scanned

    bool IsImage() const { return !volume || !imagePath.empty(); }
    bool IsPartOfImage() const { return volume && !imagePath.empty(); }
    // "card.img", or "card.img#2" of its second part.
    std::string ImageName() const;
    ScanTarget Place() const;
    // What its records carry.
    char16_t Letter() const { return IsImage() ? imageId : volume->number; }
};

struct RecoveryState
{
    explicit RecoveryState(Session& shared) : session(shared) {}

    Session& session;
    std::vector<std::unique_ptr<RecoveryTarget>> targets;  // in the order of their making
    std::vector<FoundRow> results;
    SelectionMap selection;
    std::filesystem::path restoreFolder;  // no separator at its end
    EngineTurns turns;                    // of all engines; any thread

    // Of the first target whose records carry that letter; null when there is none, or when it has none.
    std::shared_ptr<ScanSession> FindEngine(const FileRecord& record) const;
    // OnSource, MayBeOnSource or none: the worst that any scanned target says of a folder.
    DestinationFault FaultOf(const std::filesystem::path& folder) const;
};
