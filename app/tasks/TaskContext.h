// What a worker is given by its window, or by a test that stands in for one.
#pragma once

#include "app/tasks/ProgressBoard.h"
#include "app/tasks/TaskGate.h"
#include "session/Progress.h"

#include <functional>
#include <string>

class LanguageSection;

// What a worker lets the user answer.
struct TaskBox
{
    bool isQuestion = false;  // else a message
    std::string text;
    int width = 0;
    int height = 0;
};

// All of it is called on the worker's thread; only ask() waits for somebody, and is never called with the gate's lock held.
struct TaskHost
{
    std::function<void()> postDone;              // to the main window
    std::function<void(int code)> close;         // the window; the first code counts
    std::function<void()> show;                  // the window that stays hidden at first
    std::function<int(const TaskBox& box)> ask;  // CloseDone for yes
    std::function<void(bool isOpening)>
        onOpening;  // a target, from the first to the last moment of it
};

struct TaskContext
{
    TaskGate& gate;
    ProgressBoard& board;
    LanguageSection& messages;  // the section "Messages"
    LanguageSection& desktop;   // the section "Desktop"
    LanguageSection& extras;    // the section "Extras"
    TaskHost host;
};

// What a callback of a task does: it stands still as long as the user is asked whether to stop, and writes unless that is so.
template <typename Write>
Answer TellProgress(TaskGate& gate, const Write& write)
{
    const std::lock_guard held(gate.lock);
    if (gate.cancelRequested) {
        return Answer::Stop;
    }
    write();
    return Answer::GoOn;
}

// "Scanned: 40%" on the label and 40 on the bar.
void ShowPercent(const TaskContext& context, const char* messageKey, int percent);

struct RecoveryTarget;

// The keys of what is said of a target that has a letter, one that has a number, and an image.
struct StageKeys
{
    const char* letter;
    const char* number;
    const char* image;
};
std::string
StageText(LanguageSection& messages, const StageKeys& keys, const RecoveryTarget& target);
