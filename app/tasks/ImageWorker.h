// Copies a target, or a whole disk, into an image file.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "app/tasks/TaskContext.h"
#include "session/ImageTask.h"

#include <filesystem>
#include <vector>

class ImageWorker
{
public:
    explicit ImageWorker(TaskContext context);

    std::filesystem::path outputPath;
    int diskNumber = -1;  // not negative: the whole of it, when there are no targets
    std::vector<RecoveryTarget*> targets;  // else the first of these
    ImageOutcome outcome;

    void Run();

private:
    ScanTarget Source() const;
    Answer OnProgress(const Progress& progress) const;

    TaskContext m_context;
};
