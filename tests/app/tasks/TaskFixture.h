// Stands in for a window: a gate, a board, and a host that writes down what a worker asks of it.
#pragma once

#include "app/tasks/CloseCode.h"
#include "app/tasks/TaskContext.h"
#include "tests/app/tasks/TaskState.h"
#include "texts/LanguageSection.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

class TaskFixture : public testing::Test, public TaskState
{
protected:
    explicit TaskFixture(std::shared_ptr<IEngineMaker> engines = {}) : TaskState(std::move(engines))
    {
        for (const auto& [key, text] : {std::pair{"MSG0703", "Image:"},
                                        {"MSG0704", "Scanned:"},
                                        {"MSG0705", "Calculating"},
                                        {"MSG0706", "Sectors:"},
                                        {"MSG0707", "Found:"},
                                        {"MSG0708", "Left:"},
                                        {"MSG1101", "Done:"},
                                        {"MSG1102", "%d of %d, %d, %d"},
                                        {"MSG1206", "Earlier?"}}) {
            m_messages.Set(key, text);
        }
        m_desktop.Set("DSK0201", "held");
        m_desktop.Set("DSK0204", "Success");
        m_desktop.Set("DSK0205", "cut");
    }

    TaskContext Context()
    {
        TaskHost host;
        host.postDone = [this] { told += "done "; };
        host.close = [this](int code) { told += "close" + std::to_string(code) + " "; };
        host.show = [this] { told += "show "; };
        host.ask = [this](const TaskBox& box) {
            told += (box.isQuestion ? "ask " : "tell ") + box.text + " ";
            return answer;
        };
        host.onOpening = [](bool) {};
        return {gate, board, m_messages, m_desktop, extras, host};
    }

    // "path status" of each row in the order of their coming, the path from the folder on.
    std::vector<std::string> RowTexts() const
    {
        std::vector<std::string> texts;
        for (const ReportRow& row : board.Rows()) {
            texts.push_back(
                std::filesystem::path(row.path).lexically_relative(folder / "out").string() + " " +
                row.status + (row.isGood ? "" : "!"));
        }
        return texts;
    }

    LanguageSection extras;
    TaskGate gate;
    ProgressBoard board;
    std::string told;  // on the worker's thread; read when it has ended
    int answer = CloseDone;

private:
    LanguageSection m_messages;
    LanguageSection m_desktop;
};
