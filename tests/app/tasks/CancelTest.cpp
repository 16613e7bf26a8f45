// The question whether to stop, at each of the five tasks: the worker stands still as long as it is open.
#include "app/tasks/CancelQuestion.h"
#include "app/tasks/EngineTurns.h"
#include "app/tasks/ImageWorker.h"
#include "app/tasks/PreviewWorker.h"
#include "app/tasks/RestoreWorker.h"
#include "app/tasks/ScanWorker.h"
#include "app/tasks/SearchWorker.h"
#include "tests/app/tasks/TaskFixture.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using std::chrono::milliseconds;

class TaskRun : public TaskFixture
{
public:
    TaskRun()
    {
        script.Add("a.jpg", 4);
        script.Add("b.jpg", 4);
    }
    void TestBody() override {}

    void Scan()
    {
        ScanWorker worker(Context(), session);
        worker.targets = {&First()};
        worker.Run();
    }
    void Search()
    {
        OpenAll();
        SearchWorker worker(Context(), state);
        worker.targets = {&First()};
        worker.Run();
    }
    void Restore()
    {
        OpenAll();
        SelectAll();
        RestoreWorker(Context(), state).RunMany();
    }
    void Preview()
    {
        OpenAll();
        PreviewData data;
        PreviewWorker worker(Context(), state, data);
        worker.row = First().engine->Search(AllFilesPattern).rows[0];
        worker.Run();
    }
    void Image()
    {
        ImageWorker worker(Context());
        worker.outputPath = folder / "new.img";
        RecoveryTarget disk = MakeDisk(1 << 20);
        worker.targets = {&disk};
        worker.Run();
    }

    using TaskFixture::board;
    using TaskFixture::gate;
    using TaskFixture::told;
};

struct TaskCase
{
    const char* name;
    void (TaskRun::*run)();
    const char* toldOnNo;
    const char* toldOnYes;
};

// The restore leaves its report standing; what a scan has found is shown also when it was stopped.
constexpr TaskCase Cases[] = {
    {"Scan", &TaskRun::Scan, "show done close1 ", "show done close1 "},
    {"Search", &TaskRun::Search, "done close1 ", "done close2 "},
    {"Restore", &TaskRun::Restore, "", ""},
    {"Preview", &TaskRun::Preview, "close1 ", "close2 "},
    {"Image", &TaskRun::Image, "close1 ", "close2 "},
};

class CancelTest : public testing::TestWithParam<TaskCase>
{};

TEST_P(CancelTest, TheWorkerStandsStillUntilTheAnswer)
{
    for (const bool stops : {false, true}) {
        TaskRun run;
        CancelQuestion question(run.gate);
        std::thread worker;
        const CancelAnswer answer = question.Ask([&] {
            worker = std::thread([&] { (run.*GetParam().run)(); });
            std::this_thread::sleep_for(milliseconds(150));
            EXPECT_EQ(run.board.Text("percent"), "");
            EXPECT_FALSE(run.gate.finished);
            EXPECT_EQ(question.Ask([] { return true; }), CancelAnswer::NotAsked) << "asked twice";
            return stops;
        });
        EXPECT_EQ(answer, stops ? CancelAnswer::Stop : CancelAnswer::GoOn);
        question.WaitForEnd([] { return false; },
                            [] { std::this_thread::sleep_for(milliseconds(1)); });
        worker.join();
        EXPECT_EQ(run.told, stops ? GetParam().toldOnYes : GetParam().toldOnNo);
        EXPECT_EQ(run.board.Text("percent").empty(), stops);
        EXPECT_EQ(run.board.IsVisible("FinishBtn"),
                  !stops && std::string_view(GetParam().name) == "Restore");
        EXPECT_EQ(question.Ask([] { return true; }), CancelAnswer::NotAsked) << "it has finished";
    }
}

INSTANTIATE_TEST_SUITE_P(Tasks, CancelTest, testing::ValuesIn(Cases), [](const auto& row) {
    return std::string(row.param.name);
});

TEST(ProgressBoardTest, OneRequestBringsAllChangesAndTheNextOneTheRest)
{
    int asked = 0;
    ProgressBoard board([&asked] { ++asked; });
    board.SetText("percent", "1%");
    board.SetText("percent", "2%");
    board.SetValue("progress", 2);
    const std::size_t row = board.AddRow({0, "a.jpg", "Success", true});
    EXPECT_EQ(asked, 1);
    const BoardChanges first = board.Take();
    EXPECT_EQ(first.texts.at("percent"), "2%");
    EXPECT_EQ(first.rows.size(), 1u);
    board.ChangeRow({row, "a.jpg", "Read fault.", false});
    board.ChangeRow({row + 1, "", "", true});
    EXPECT_EQ(asked, 2);
    const BoardChanges second = board.Take();
    EXPECT_TRUE(second.texts.empty());
    ASSERT_EQ(second.rows.size(), 1u);
    EXPECT_EQ(second.rows[0].number, row);
    EXPECT_FALSE(board.Rows()[0].isGood);
    EXPECT_EQ(board.Value("progress"), 2);
}

TEST(ProgressBoardTest, WhatIsWrittenWhileItIsTakenIsNotLost)
{
    std::atomic<int> asked = 0;
    ProgressBoard board([&asked] { ++asked; });
    constexpr int Rows = 20000;
    std::thread writer([&board] {
        for (int i = 0; i < Rows; ++i) {
            board.SetValue("progress", i);
            board.AddRow({0, std::to_string(i), "Success", true});
        }
    });
    std::size_t seen = 0;
    int taken = 0;
    while (seen < Rows) {
        if (taken < asked) {
            ++taken;
            seen += board.Take().rows.size();
        }
    }
    writer.join();
    EXPECT_EQ(seen, std::size_t{Rows});
    EXPECT_EQ(board.Value("progress"), Rows - 1);
}

TEST(EngineTurnsTest, TheBackgroundStopsForATaskAndWaitsUntilItIsOver)
{
    EngineTurns turns;
    std::atomic<int> steps = 0;
    std::atomic<bool> isInside = false;
    std::thread background([&] {
        EXPECT_TRUE(turns.RunInBackground([&] {
            isInside = true;
            while (!turns.IsTaskWaiting()) {
                ++steps;
                std::this_thread::yield();
            }
            isInside = false;
        }));
    });
    while (steps == 0) {
        std::this_thread::yield();
    }
    {
        const EngineTurns::Task task(turns);
        EXPECT_FALSE(turns.RunShortly([] { FAIL() << "a task has the engines"; }));
        EXPECT_FALSE(isInside);
        EXPECT_FALSE(turns.RunInBackground([] { FAIL() << "a task has the engines"; }));
    }
    background.join();
    EXPECT_TRUE(turns.RunInBackground([&turns] {
        EXPECT_FALSE(turns.RunShortly([] { FAIL() << "the background does not stop"; }));
    }));
    EXPECT_TRUE(turns.RunShortly([&turns] { EXPECT_FALSE(turns.RunInBackground([] {})); }));
    EXPECT_TRUE(turns.RunInBackground([] {}));
}

}  // namespace
