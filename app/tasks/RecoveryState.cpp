#include "app/tasks/RecoveryState.h"

#include <algorithm>

std::shared_ptr<ScanSession> RecoveryState::FindEngine(const FileRecord& record) const
{
    const auto found = std::find_if(targets.begin(), targets.end(), [&record](const auto& target) {
        return target->Letter() == record.DriveLetter;
    });
    return found == targets.end() ? nullptr : (*found)->engine;
}
