// Copies what can be read of a failing disk into an image file.
#pragma once

#include "app/tasks/TaskContext.h"
#include "session/RescueTask.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

class RescueWorker
{
public:
    static constexpr std::size_t StripCells = 128;

    explicit RescueWorker(TaskContext context);

    ScanTarget source;
    std::filesystem::path outputPath;
    // That a copy has just brought into the file; nothing where an earlier rescue is resumed.
    std::optional<std::uint64_t> copiedBytes;
    RescueOutcome outcome;
    std::optional<RescueProblem> problem;  // why it was not begun

    void Run();

private:
    bool IsChecked(RescueTask& task);
    Answer OnProgress(const RescueProgress& progress);
    void ShowStep(const RescueProgress& progress) const;

    TaskContext m_context;
    std::chrono::steady_clock::time_point m_begun = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_shown;
};

// What became of it, in a sentence or two of the section "Extras".
std::string RescueSummary(const RescueOutcome& outcome, LanguageSection& extras);
