#include "app/tasks/RecoveryState.h"

#include "session/TargetParts.h"

#include <algorithm>

std::string RecoveryTarget::ImageName() const
{
    const std::string name = imagePath.filename().string();
    return IsPartOfImage() ? name + "#" + std::to_string(unsigned{volume->number}) : name;
}

ScanTarget RecoveryTarget::Place() const
{
    if (!IsImage()) {
        return TargetOf(*volume);
    }
    ScanTarget place = TargetOfImage(imagePath, imageId);
    if (IsPartOfImage()) {
        place = TargetOfPart(place, *volume);
        place.letter = imageId;
    }
    return place;
}

std::shared_ptr<ScanSession> RecoveryState::FindEngine(const FileRecord& record) const
{
    const auto found = std::find_if(targets.begin(), targets.end(), [&record](const auto& target) {
        return target->Letter() == record.DriveLetter;
    });
    return found == targets.end() ? nullptr : (*found)->engine;
}

DestinationFault RecoveryState::FaultOf(const std::filesystem::path& folder) const
{
    const Destination destination(folder, Layout::ByCategory);
    DestinationFault worst = DestinationFault::None;
    for (const auto& target : targets) {
        if (!target->engine) {
            continue;
        }
        const DestinationFault fault = destination.CheckPlace(target->engine->Target());
        if (fault == DestinationFault::OnSource) {
            return fault;
        }
        if (fault != DestinationFault::None) {
            worst = fault;
        }
    }
    return worst;
}
