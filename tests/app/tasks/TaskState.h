// Targets with engines that do as they are told, for the tests of tasks and their windows.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "tests/support/Bytes.h"
#include "tests/support/FakeEngines.h"
#include "tests/support/MadeUpSystem.h"

#include <string>

class TaskState
{
public:
    explicit TaskState(std::shared_ptr<IEngineMaker> engines = {})
        : session(engines ? std::move(engines) : std::make_shared<FakeEngines>(script))
    {
        session.History().KeepRecordsIn(folder / "data");
        state.restoreFolder = folder / "out";
        script.content = Bytes("'data'");
        AddImage("card.img");
    }

    RecoveryTarget& AddImage(const std::string& name)
    {
        auto& target = *state.targets.emplace_back(std::make_unique<RecoveryTarget>());
        target.imagePath = folder / name;
        target.imageId = static_cast<char16_t>(ScanTarget::FirstImageId + state.targets.size() - 1);
        WriteFileBytes(target.imagePath, ByteVector(4096));
        return target;
    }
    RecoveryTarget& First() { return *state.targets.front(); }
    // As after a scan.
    void OpenAll()
    {
        for (const auto& target : state.targets) {
            target->engine =
                session.Open(TargetOfImage(target->imagePath, target->imageId), ScanDepth::Deep)
                    .session;
        }
    }
    // All that the script has; FakeEngines gives the same from every target.
    void SelectAll()
    {
        for (const FoundRow& row : First().engine->Search(AllFilesPattern).rows) {
            SetSelected(state.selection, row, true);
        }
    }
    // A disk that is a file, as a volume's target.
    RecoveryTarget MakeDisk(std::uint64_t bytes)
    {
        system.AddDisk("sda", "8:0", bytes);
        RecoveryTarget target;
        target.volume = session.ListTargets().rows.at(0);
        return target;
    }

    TempFolder folder;
    FakeScript script;
    MadeUpSystem system;
    Session session;
    RecoveryState state{session};
};
