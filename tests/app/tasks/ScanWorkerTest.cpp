// What a scan and a search tell and ask.
#include "app/tasks/ScanWorker.h"

#include "app/tasks/PreviewWorker.h"
#include "app/tasks/SearchWorker.h"
#include "platform/FileHandle.h"
#include "recovery/UnreadFile.h"
#include "tests/app/tasks/TaskFixture.h"

#include <algorithm>
#include <future>

namespace {

class ScanWorkerTest : public TaskFixture
{
protected:
    using TaskFixture::TaskFixture;

    void Scan(int engineMode = 1)
    {
        ScanWorker worker(Context(), session);
        for (const auto& target : state.targets) {
            worker.targets.push_back(target.get());
        }
        worker.engineMode = engineMode;
        worker.Run();
    }
};

struct LabelCase
{
    FakeScript::Call call;
    const char* percent;
    const char* time;
    const char* sectors;
    const char* found;
};

TEST_F(ScanWorkerTest, ProgressBecomesLabels)
{
    const LabelCase cases[] = {
        {{50, 9, 30}, "Scanned: 4%", "Calculating", "", ""},
        {{100, 90, -1, 10, 20, 7}, "Scanned: 90%", "Calculating", "Sectors: 10 / 20", "Found: 7"},
        {{50, 90, 3725, 10, 20, 7},
         "Scanned: 45%",
         "Left:1 Hour 2 Min",
         "Sectors: 10 / 20",
         "Found: 7"},
        {{50, 100, 59}, "Scanned: 50%", "Left:59 Sec", "", ""},
        {{100, 100, -1}, "Scanned: 100%", "", "", ""},
    };
    for (const LabelCase& row : cases) {
        script.calls = {row.call};
        board.SetText("sectors", "");
        board.SetText("totalfile", "");
        Scan();
        EXPECT_EQ(board.Text("percent"), row.percent);
        EXPECT_EQ(board.Text("time"), row.time) << row.percent;
        EXPECT_EQ(board.Text("sectors"), row.sectors) << row.percent;
        EXPECT_EQ(board.Text("totalfile"), row.found) << row.percent;
        EXPECT_EQ(board.IsVisible("sectors"), row.sectors[0] != 0) << row.percent;
        EXPECT_EQ(board.IsVisible("totalfile"), row.sectors[0] != 0) << row.percent;
    }
    EXPECT_EQ(board.Text("stage"), "Image: card.img");
}

TEST_F(ScanWorkerTest, EachTargetGetsAnEngineOfItsOwnAndAStopLeavesTheOthersAsTheyWere)
{
    AddImage("second.img");
    AddImage("third.img");
    OpenAll();
    const std::shared_ptr<ScanSession> ofThird = state.targets[2]->engine;
    state.targets[1]->engine.reset();
    script.inScan = [this] { gate.cancelRequested = state.targets[1]->engine != nullptr; };
    Scan();
    EXPECT_EQ(told, "show show done close1 ") << "what was found until then is shown";
    EXPECT_NE(state.targets[1]->engine, nullptr);
    EXPECT_EQ(state.targets[2]->engine, ofThird);
    EXPECT_TRUE(gate.finished);
}

TEST_F(ScanWorkerTest, WhatCannotBeScannedEndsItAndSaysSo)
{
    Scan();
    ASSERT_NE(First().engine, nullptr);
    told.clear();
    gate.Reset();
    script.opens = ResultShortRead;
    Scan();
    EXPECT_EQ(told, "close3 ");
    EXPECT_EQ(First().engine, nullptr) << "the one before has gone";
    EXPECT_FALSE(gate.finished);

    told.clear();
    FileHandle other;  // as another process would hold it
    ASSERT_EQ(other.OpenOrCreate(session.History().RecordsFolder() / "in-use.lock"), ResultSuccess);
    ASSERT_TRUE(other.TryLock());
    Scan();
    EXPECT_EQ(told, "tell held close2 ");
}

TEST_F(ScanWorkerTest, AnEarlierScanIsDroppedUnlessTheAnswerIsYes)
{
    const ScanLogEntry earlier{};
    struct Answers
    {
        int engineMode;
        int answer;
        int discarded;
        const char* told;
    };
    for (const Answers& row : {Answers{1, CloseDone, 0, "ask Earlier? show done close1 "},
                               {1, CloseCancelled, 1, "ask Earlier? show done close1 "},
                               {0, CloseCancelled, 0, "show done close1 "}}) {
        script.earlier = earlier;
        script.discarded = 0;
        told.clear();
        gate.Reset();
        answer = row.answer;
        Scan(row.engineMode);
        EXPECT_EQ(script.discarded, row.discarded);
        EXPECT_EQ(told, row.told);
    }
}

TEST_F(ScanWorkerTest, AnEarlierScanSaysWhatItLacksAndWhatWasNotReadIsTriedAgain)
{
    extras.Set("EXT0201", "stopped %d");
    extras.Set("EXT0202", "killed %d");
    extras.Set("EXT0203", "unread %d");
    extras.Set("EXT0204", "again?");
    ScanLogEntry earlier{};
    earlier.sectorCount = 1000;
    earlier.sectorsDone = 400;
    earlier.rangeLength = 1000;
    script.earlier = earlier;
    Scan();
    EXPECT_EQ(told.substr(0, told.find(" show")), "ask Earlier?\nstopped 36") << told;
    script.earlier->rangeLength = 0;
    told.clear();
    gate.Reset();
    Scan();
    EXPECT_EQ(told, "ask Earlier? show done close1 ") << "a complete one lacks nothing";

    const std::u16string log = (folder / "").u16string();
    std::copy(log.begin(), log.end(), script.earlier->logFolder);
    SectorRanges unread;
    unread.Add(7, 5);
    ASSERT_EQ(WriteUnread(folder.Path(), unread), ResultSuccess);
    told.clear();
    gate.Reset();
    Scan();
    EXPECT_EQ(told, "ask Earlier?\nunread 5 ask again? show done close1 ");
    EXPECT_EQ(script.readAgain, 1);
}

TEST_F(ScanWorkerTest, ASearchPutsTargetsOneBehindTheOtherAndEndsAtOneWithoutAnEngine)
{
    script.Add("a.jpg", 4);
    AddImage("second.img");
    OpenAll();
    SearchWorker worker(Context(), state);
    worker.targets = {&First(), state.targets[1].get()};
    worker.Run();
    EXPECT_EQ(told, "done close1 ");
    EXPECT_EQ(state.results.size(), 2u);

    told.clear();
    gate.Reset();
    state.targets[1]->engine.reset();
    worker.Run();
    EXPECT_EQ(told, "close1 ") << "nothing is shown";
    EXPECT_FALSE(gate.finished);
    worker.targets.clear();
    told.clear();
    worker.Run();
    EXPECT_EQ(told, "close1 ");
    EXPECT_TRUE(gate.finished);
}

// Opens when it is let.
class SlowEngines : public IEngineMaker
{
public:
    explicit SlowEngines(std::shared_future<void> isLet) : m_isLet(std::move(isLet)) {}
    std::unique_ptr<IFileRecoveryParse> Make(const EngineTarget&,
                                             ScanDepth,
                                             const std::shared_ptr<ScanLogDirectory>&,
                                             ResultCode*) override
    {
        m_isLet.wait();
        return nullptr;
    }

private:
    std::shared_future<void> m_isLet;
};

class SlowRun : public TaskFixture
{
public:
    explicit SlowRun(std::shared_ptr<SlowEngines> engines) : TaskFixture(std::move(engines)) {}
    void TestBody() override
    {
        std::thread stopper([this] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            gate.cancelRequested = true;
        });
        ScanWorker worker(Context(), session);
        worker.targets = {&First()};
        worker.Run();
        stopper.join();
        EXPECT_EQ(told, "close2 ");
        EXPECT_FALSE(gate.finished);
    }
};

TEST(OpeningTest, OneThatHangsIsLeftAlone)
{
    std::promise<void> let;
    auto engines = std::make_shared<SlowEngines>(let.get_future().share());
    const std::weak_ptr<SlowEngines> inUse = engines;
    SlowRun(std::move(engines)).TestBody();
    // All else has gone, and what still opens has what it needs.
    EXPECT_FALSE(inUse.expired());
    let.set_value();
    while (!inUse.expired()) {
        std::this_thread::yield();
    }
}

struct PreviewCase
{
    const char* name;
    bool isPlayable;
    bool isAudio;
};

TEST_F(ScanWorkerTest, APreviewKnowsWhatThePlayersPlay)
{
    OpenAll();
    PreviewData data;
    int killed = 0;
    for (const PreviewCase& row : {PreviewCase{"a.jpg", false, false},
                                   {"A.MP3", true, true},
                                   {"b.avi", true, false},
                                   {"README", false, false}}) {
        script.records.clear();
        script.Add(row.name, 4);
        PreviewWorker worker(Context(), state, data);
        worker.row = First().engine->Search(AllFilesPattern).rows[0];
        worker.killPlayers = [&killed] { ++killed; };
        worker.playerDelay = std::chrono::milliseconds(1);
        worker.Run();
        EXPECT_EQ(data.isPlayable, row.isPlayable) << row.name;
        EXPECT_EQ(data.isAudio, row.isAudio) << row.name;
        EXPECT_EQ(data.tempPath, "tmp.jpg");
        EXPECT_EQ(data.dataSize, 4u);
        EXPECT_EQ(data.row.record.NameText(), row.name);
    }
    EXPECT_EQ(killed, 4);
    script.restores = [](const FileRecord&) { return ResultReadFault; };
    for (const bool hasEngine : {true, false}) {
        PreviewWorker worker(Context(), state, data);
        worker.row = data.row;
        First().engine = hasEngine ? First().engine : nullptr;
        data.tempPath = "before";
        told.clear();
        worker.Run();
        EXPECT_EQ(data.tempPath, "");
        EXPECT_EQ(data.dataSize, 0u);
        EXPECT_EQ(told, "close1 ") << "the pane stays empty";
    }
}

}  // namespace
