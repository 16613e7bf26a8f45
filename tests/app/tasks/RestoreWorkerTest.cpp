// The report on restored files: rows, counts, and what goes wrong around them.
#include "app/tasks/RestoreWorker.h"

#include "tests/app/tasks/TaskFixture.h"

#include <csetjmp>

namespace {

using Rows = std::vector<std::string>;

class RestoreWorkerTest : public TaskFixture
{
protected:
    void Restore()
    {
        OpenAll();
        SelectAll();
        Run();
    }
    void Run()
    {
        RestoreWorker worker(Context(), state);
        worker.faultGuard = faultGuard;
        worker.RunMany();
    }

    std::function<bool(const std::function<void()>& work)> faultGuard;
};

TEST_F(RestoreWorkerTest, OneOfTenFails)
{
    for (int i = 0; i < 10; ++i) {
        script.Add("f" + std::to_string(i) + ".jpg", 4);
    }
    script.restores = [](const FileRecord& record) {
        return record.NameText() == "f3.jpg" ? ResultReadFault : ResultSuccess;
    };
    Restore();
    EXPECT_EQ(board.Text("recovered"), "10 of 10, 9, 1");
    EXPECT_EQ(board.Text("percent"), "Done: 100%");
    EXPECT_EQ(board.Rows().size(), 10u);
    EXPECT_EQ(RowTexts()[3], "photo/f3.jpg " + ErrorText(ResultReadFault) + "!");
    EXPECT_EQ(RowTexts()[4], "photo/f4.jpg Success");
    EXPECT_TRUE(board.IsVisible("FinishBtn"));
    EXPECT_TRUE(gate.finished);
    EXPECT_EQ(told, "") << "the window stays open on its report";
}

TEST_F(RestoreWorkerTest, NamesAreOneComponentAndEqualOnesGetNumbers)
{
    script.Add("a.jpg", 4);
    script.Add("a.jpg", 4);
    script.Add("../../b/c.mp3", 4);
    script.Add("plain", 4);
    script.Add("..", 4);
    Restore();
    EXPECT_EQ(RowTexts(),
              (Rows{"photo/a.jpg Success", "photo/a(1).jpg Success", "audio/.._.._b_c.mp3 Success",
                    "photo/plain Success", "photo/__ Success"}));
    EXPECT_EQ(ReadFileBytes(folder / "out/audio/.._.._b_c.mp3"), script.content);
}

TEST_F(RestoreWorkerTest, ARecordWithoutAnEngineFailsWithoutARow)
{
    script.Add("a.jpg", 4);
    script.Add("b.jpg", 4);
    OpenAll();
    SelectAll();
    // Of a target that was taken from the list after the search.
    FoundRow last = state.selection.rbegin()->second.Row();
    SetSelected(state.selection, last, false);
    last.record.DriveLetter = 7;
    SetSelected(state.selection, last, true);
    Run();
    EXPECT_EQ(board.Text("recovered"), "2 of 2, 1, 1");
    EXPECT_EQ(RowTexts(), (Rows{"photo/a.jpg Success"}));
}

TEST_F(RestoreWorkerTest, WhatTheGuardEndsFailsWithoutARowAndTheNextOneFollows)
{
    static std::jmp_buf place;
    faultGuard = [](const std::function<void()>& work) {
        if (setjmp(place) != 0) {
            return false;
        }
        work();
        return true;
    };
    for (const char* name : {"a.jpg", "bad.jpg", "c.jpg"}) {
        script.Add(name, 4);
    }
    script.restores = [](const FileRecord& record) {
        if (record.NameText() == "bad.jpg") {
            std::longjmp(place, 1);
        }
        return ResultSuccess;
    };
    Restore();
    EXPECT_EQ(board.Text("recovered"), "3 of 3, 2, 1");
    EXPECT_EQ(RowTexts(), (Rows{"photo/a.jpg Success", "photo/c.jpg Success"}));
    EXPECT_TRUE(board.IsVisible("FinishBtn"));
}

TEST_F(RestoreWorkerTest, ADestinationThatCannotBeWrittenIsARowForEachFile)
{
    script.Add("a.jpg", 4);
    script.Add("b.jpg", 4);
    WriteFileBytes(folder / "out", {});
    script.restores = [](const FileRecord&) { return ResultPathNotFound; };
    Restore();
    EXPECT_EQ(board.Text("recovered"), "2 of 2, 0, 2");
    EXPECT_EQ(board.Rows().size(), 2u);
    EXPECT_FALSE(board.Rows()[0].isGood);
}

TEST_F(RestoreWorkerTest, ThreeFilesInARowWithoutRoomAskWhetherToStop)
{
    extras.Set("EXT0206", "full?");
    extras.Set("EXT0254", "%d of %d, %d");
    for (int i = 0; i < 9; ++i) {
        script.Add("f" + std::to_string(i) + ".jpg", 4);
    }
    const std::string hasRoom = "f2.jpg";  // two that fail before it do not count
    script.restores = [&hasRoom](const FileRecord& record) {
        return record.NameText() == hasRoom ? ResultSuccess : ResultDiskFull;
    };
    Restore();
    EXPECT_EQ(told, "ask full? ");
    EXPECT_EQ(board.Text("recovered"), "6 of 9, 1, 5");
    EXPECT_EQ(board.Text("summary"), "1 of 9, 5") << "the report stands";
    EXPECT_TRUE(board.IsVisible("FinishBtn"));

    told.clear();
    answer = CloseCancelled;
    Run();
    EXPECT_EQ(told, "ask full? ") << "once in a row";
    EXPECT_EQ(board.Text("recovered"), "9 of 9, 1, 8");
}

TEST_F(RestoreWorkerTest, OneRecordAloneAndNone)
{
    script.Add("a.jpg", 4);
    OpenAll();
    const FoundRow row = First().engine->Search(AllFilesPattern).rows[0];
    RestoreWorker(Context(), state).RunOne(nullptr);
    EXPECT_TRUE(gate.finished);
    EXPECT_FALSE(board.IsVisible("FinishBtn"));
    gate.Reset();
    RestoreWorker(Context(), state).RunOne(&row);
    EXPECT_EQ(board.Text("recovered"), "1 of 1, 1, 0");
    EXPECT_TRUE(board.IsVisible("FinishBtn"));
    EXPECT_TRUE(gate.finished);
}

// Tells the end of a file as a test has it.
class TellingEngine : public FakeEngine
{
public:
    using FakeEngine::FakeEngine;
    ResultCode SetCallbacks(ProgressCallback scan,
                            FileProgressCallback file,
                            void* context,
                            std::int32_t range) override
    {
        m_tell = file;
        m_to = context;
        return FakeEngine::SetCallbacks(scan, file, context, range);
    }
    ResultCode RestoreRecord(const FileRecord* record,
                             const std::filesystem::path& path,
                             std::uint32_t) override
    {
        const std::string_view name = record->NameText();
        if (name != "absent.jpg") {
            WriteFileBytes(path, ByteVector(name == "cut.jpg" ? 2 : 4));
        }
        if (name == "twice.jpg") {
            (void)m_tell(m_to, 100, 100, ResultSuccess, path);
            return m_tell(m_to, 100, 100, ResultReadFault, path);
        }
        if (name == "early.jpg") {
            (void)m_tell(m_to, 50, 100, ResultReadFault, path);
            return ResultReadFault;
        }
        return name == "absent.jpg" ? ResultAccessDenied : ResultSuccess;  // and no call at all
    }

private:
    FileProgressCallback m_tell = nullptr;
    void* m_to = nullptr;
};

class TellingEngines : public IEngineMaker
{
public:
    std::unique_ptr<IFileRecoveryParse> Make(const EngineTarget&,
                                             ScanDepth,
                                             const std::shared_ptr<ScanLogDirectory>&,
                                             ResultCode*) override
    {
        return std::make_unique<TellingEngine>(*script);
    }
    FakeScript* script = nullptr;
};

class TellingTest : public TaskFixture
{
protected:
    explicit TellingTest(
        std::shared_ptr<TellingEngines> engines = std::make_shared<TellingEngines>())
        : TaskFixture(engines)
    {
        engines->script = &script;
    }
};

TEST_F(TellingTest, AFileIsOneRowHoweverOftenAndWheneverItsEndIsTold)
{
    for (const char* name : {"twice.jpg", "early.jpg", "absent.jpg", "silent.jpg", "cut.jpg"}) {
        script.Add(name, 4);
    }
    OpenAll();
    SelectAll();
    RestoreWorker(Context(), state).RunMany();
    const std::string fault = ErrorText(ResultReadFault);
    EXPECT_EQ(RowTexts(), (Rows{"photo/twice.jpg " + fault + "!", "photo/early.jpg " + fault + "!",
                                "photo/absent.jpg " + ErrorText(ResultAccessDenied) + "!",
                                "photo/silent.jpg Success", "photo/cut.jpg cut!"}));
    // The first end of the file counts, and it was good.
    EXPECT_EQ(board.Text("recovered"), "5 of 5, 2, 3");
}

}  // namespace
