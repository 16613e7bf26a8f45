// Opening, scanning, searching, restoring and the log of scans, with engines that do as they are told.
#include "recovery/ScanLogDirectory.h"
#include "session/RestoreFiles.h"
#include "session/Session.h"
#include "tests/support/Bytes.h"
#include "tests/support/FakeEngines.h"

#include <gtest/gtest.h>

#include <future>
#include <new>
#include <stdexcept>

namespace {

class ScanSessionTest : public testing::Test
{
protected:
    ScanSessionTest() { m_session.History().KeepRecordsIn(m_folder / "data"); }

    std::shared_ptr<ScanSession> Open(ScanDepth depth = ScanDepth::Deep)
    {
        ScanTarget target;
        target.imagePath = m_folder / "card.img";
        target.letter = ScanTarget::FirstImageId;
        return m_session.Open(target, depth).session;
    }

    // An earlier scan in the log, in a folder of its own.
    std::filesystem::path AddEarlier(const std::string& image, std::uint64_t sectorsDone)
    {
        ScanLogDirectory& log = *m_session.History().Log();
        const std::filesystem::path folder = log.BeginNewLog();
        std::filesystem::create_directories(folder);
        WriteFileBytes(folder / "store", ByteVector(100));
        WriteFileBytes(m_folder / image, Bytes("00"));
        ScanPosition position;
        position.rangeLength = sectorsDone == 1000 ? 0 : 1;
        position.sectorsDone = sectorsDone;
        position.filesFound = 7;
        EXPECT_EQ(log.SaveProgress({ImageDiskNumber, 0, 1000, m_folder / image}, position, folder),
                  ResultSuccess);
        return folder;
    }

    TempFolder m_folder;
    FakeScript m_script;
    Session m_session{std::make_shared<FakeEngines>(m_script)};
};

TEST_F(ScanSessionTest, WhatCannotBeOpenedTellsWhy)
{
    m_script.opens = ResultShortRead;
    const OpenOutcome shortOne = m_session.Open({m_folder / "card.img"}, ScanDepth::Deep);
    EXPECT_EQ(shortOne.end, OpenEnd::Refused);
    EXPECT_EQ(shortOne.refusal.fault, TargetFault::CannotBeOpened);
    EXPECT_EQ(shortOne.refusal.why, ResultShortRead);
    m_script.opens = ResultSuccess;
    m_script.recognised = false;
    EXPECT_EQ(m_session.Open({m_folder / "card.img"}, ScanDepth::Quick).refusal.fault,
              TargetFault::UnknownFileSystem);
    WriteFileBytes(m_folder / "file", {});
    m_session.History().KeepRecordsIn(m_folder / "file");
    const OpenOutcome locked = m_session.Open({m_folder / "card.img"}, ScanDepth::Deep);
    EXPECT_EQ(locked.end, OpenEnd::NotLocked);
    EXPECT_EQ(locked.lock.end, LockEnd::CannotMakeFolder);
}

TEST_F(ScanSessionTest, ProgressIsScaledToTheWholeAndItsAnswerStops)
{
    m_script.Add("a.jpg", 1);
    m_script.calls = {{50, 9, 30}, {100, 9, 0}, {40, 90, 65, 5, 10, 7}, {100, 100, -1}};
    std::vector<Progress> seen;
    const auto open = Open();
    const ScanOutcome whole = open->Scan(EarlierChoice::GoOn, [&seen](const Progress& progress) {
        seen.push_back(progress);
        return Answer::GoOn;
    });
    EXPECT_EQ(whole.end, ScanEnd::Complete);
    ASSERT_EQ(seen.size(), 4u);
    const std::int32_t percents[] = {4, 9, 36, 100};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(seen[i].percent, percents[i]);
    }
    EXPECT_EQ(seen[0].range, 9);
    EXPECT_EQ(seen[0].found, 1u) << "outside of the pass the engine counts";
    EXPECT_EQ(seen[2].secondsLeft, 65);
    EXPECT_EQ(seen[2].done, 5u);
    EXPECT_EQ(seen[2].total, 10u);
    EXPECT_EQ(seen[2].found, 7u);
    int calls = 0;
    const ScanOutcome stopped = open->Scan(EarlierChoice::GoOn, [&calls](const Progress&) {
        return ++calls == 2 ? Answer::Stop : Answer::GoOn;
    });
    EXPECT_EQ(stopped.end, ScanEnd::Stopped);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(stopped.found, 1u);
}

TEST_F(ScanSessionTest, AScanThatMeetsAFaultOrThrowsEndsInAnOutcome)
{
    m_script.scans = ResultReadFault;
    EXPECT_EQ(Open()->Scan(EarlierChoice::GoOn, {}).end, ScanEnd::Failed);
    m_script.Add("a.jpg", 1);
    const ScanOutcome incomplete = Open()->Scan(EarlierChoice::GoOn, {});
    EXPECT_EQ(incomplete.end, ScanEnd::Incomplete);
    EXPECT_EQ(incomplete.why, ResultReadFault);
    m_script.inScan = [] { throw std::bad_alloc(); };
    const ScanOutcome broken = Open()->Scan(EarlierChoice::GoOn, {});
    EXPECT_EQ(broken.end, ScanEnd::Broken);
    EXPECT_EQ(broken.why, ResultOutOfMemory);
    m_script.inScan = [] { throw std::runtime_error("a fault of our own"); };
    EXPECT_EQ(Open()->Scan(EarlierChoice::GoOn, {}).why, ResultGeneralFailure);
}

TEST_F(ScanSessionTest, AnEarlierScanIsAQuestionThatTheCallerAnswers)
{
    EXPECT_FALSE(Open()->Earlier());
    const std::filesystem::path folder = AddEarlier("card.img", 400);
    m_script.earlier = m_session.History().Log()->Entries().at(0);
    auto open = Open();
    const std::optional<EarlierScan> earlier = open->Earlier();
    ASSERT_TRUE(earlier);
    EXPECT_EQ(earlier->number, folder.filename());
    EXPECT_EQ(earlier->imagePath, m_folder / "card.img");
    EXPECT_EQ(earlier->state, EarlierState::Stopped);
    EXPECT_EQ(earlier->percent, 36u);
    EXPECT_EQ(earlier->files, 7u);
    EXPECT_EQ(earlier->bytes, 100u);
    EXPECT_NE(earlier->savedAt, 0u);
    EXPECT_EQ(open->Scan(EarlierChoice::GoOn, {}).end, ScanEnd::Complete);
    EXPECT_EQ(m_script.discarded, 0);
    EXPECT_FALSE(open->Earlier());
    EXPECT_EQ(Open()->Scan(EarlierChoice::Drop, {}).end, ScanEnd::Complete);
    EXPECT_EQ(m_script.discarded, 1);
}

TEST_F(ScanSessionTest, ASearchCanBeStoppedAndRowsKnowTheirPlace)
{
    m_script.Add("a.jpg", 1);
    m_script.Add("b.txt", 2);
    m_script.Add("c.jpg", 3);
    const auto open = Open();
    const SearchOutcome photos = open->Search(*TypeFilter::Parse("photo"));
    ASSERT_EQ(photos.rows.size(), 2u);
    EXPECT_EQ(photos.rows[1].record.NameText(), "c.jpg");
    EXPECT_EQ(photos.rows[1].at, (StorePlace{EngineKindCarved, 3}));
    EXPECT_FALSE(photos.rows[1].doubleOf);
    int calls = 0;
    const SearchOutcome stopped = open->Search("*", [&calls](const Progress& progress) {
        EXPECT_EQ(progress.percent, 50);
        return ++calls == 2 ? Answer::Stop : Answer::GoOn;
    });
    EXPECT_TRUE(stopped.stopped);
    EXPECT_EQ(stopped.rows.size(), 1u);
}

TEST_F(ScanSessionTest, APreviewIsAFileOrBytesOrNothing)
{
    m_script.Add("a.txt", 3);
    m_script.content = Bytes("'abc'");
    const auto open = Open();
    const FileRecord& record = m_script.records[0];
    EXPECT_EQ(open->Preview(record, 2, {}).bytes, Bytes("'ab'"));
    EXPECT_EQ(open->Preview(record, 20, {}).file, "tmp.jpg");
    const PreviewOutcome stopped =
        open->Preview(record, 20, [](const Progress&) { return Answer::Stop; });
    EXPECT_TRUE(stopped.stopped);
    EXPECT_TRUE(stopped.file.empty() && stopped.bytes.empty());
    m_script.restores = [](const FileRecord&) { return ResultReadFault; };
    const PreviewOutcome failed =
        open->Preview(record, 20, [](const Progress&) { return Answer::GoOn; });
    EXPECT_EQ(failed.why, ResultReadFault);
    EXPECT_FALSE(failed.stopped);
}

TEST_F(ScanSessionTest, WhatGoesWrongWithOneFileDoesNotEndTheOthers)
{
    for (const char* name : {"good.jpg", "memory.jpg", "throws.jpg", "unread.jpg", "good.jpg"}) {
        m_script.Add(name, 4);
    }
    m_script.Add("orphan.jpg", 4);
    m_script.content = Bytes("'data'");
    m_script.folders = "..\\Lake\\";
    std::vector<std::shared_ptr<ScanSession>> sources = {Open()};
    std::vector<FoundRow> rows = sources[0]->Search(TypeFilter::All()).rows;
    rows.back().record.DriveLetter = 7;  // its disk is not open
    m_script.restores = [&sources](const FileRecord& record) {
        sources.clear();  // the face lets go of it: the restoring holds it
        if (record.NameText() == "memory.jpg") {
            throw std::bad_alloc();
        }
        if (record.NameText() == "throws.jpg") {
            throw 1;
        }
        return record.NameText() == "unread.jpg" ? ResultReadFault : ResultSuccess;
    };
    Destination destination(m_folder / "out", Layout::ByTree);
    ASSERT_EQ(destination.Make().fault, DestinationFault::None);
    std::vector<FileOutcome> outcomes;
    std::vector<RestoreProgress> seen;
    const RestoreCalls calls = {
        [&seen](const RestoreProgress& progress) {
            seen.push_back(progress);
            return Answer::GoOn;
        },
        [&outcomes](ScanSession*, const FoundRow&, const FileOutcome& outcome) {
            outcomes.push_back(outcome);
        }};
    const RestoreOutcome outcome = RestoreFiles(sources, rows, destination, calls);
    EXPECT_EQ(outcome.restored, 2u);
    EXPECT_EQ(outcome.failed, 4u);
    const ResultCode whys[] = {ResultSuccess,   ResultOutOfMemory, ResultGeneralFailure,
                               ResultReadFault, ResultSuccess,     ResultNotConnected};
    ASSERT_EQ(outcomes.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(outcomes[i].why, whys[i]) << i;
        EXPECT_EQ(outcomes[i].end, whys[i] == ResultSuccess ? FileEnd::Restored : FileEnd::Failed);
    }
    EXPECT_EQ(outcomes[0].path, m_folder / "out/__/Lake/good.jpg");
    EXPECT_EQ(outcomes[4].path, m_folder / "out/__/Lake/good(1).jpg");
    EXPECT_EQ(ReadFileBytes(outcomes[4].path), m_script.content);
    EXPECT_TRUE(outcomes[3].written) << "what was read before stays";
    EXPECT_EQ(m_script.answers, (std::vector<ResultCode>{0, ResultReadFault, 0}))
        << "an error is given back, so that it does not count as overcome";
    EXPECT_EQ(seen[1].percent, 50);
    EXPECT_EQ(seen[1].total, 6u);
    EXPECT_EQ(seen[1].path, outcomes[0].path);
}

TEST_F(ScanSessionTest, ScansAreForgottenWhileAnotherGoesOn)
{
    const std::filesystem::path used = AddEarlier("card.img", 1000);
    const std::filesystem::path other = AddEarlier("other.img", 10);
    EXPECT_EQ(m_session.History().List().scans.at(0).state, EarlierState::Complete);
    m_script.earlier = m_session.History().Log()->Entries().at(0);
    m_script.logFolder = used;
    std::promise<void> begun;
    std::promise<void> forgotten;
    m_script.inScan = [&] {
        begun.set_value();
        forgotten.get_future().wait();
    };
    std::shared_ptr<ScanSession> open = Open();
    std::future<ScanOutcome> scan =
        std::async(std::launch::async, [open] { return open->Scan(EarlierChoice::GoOn, {}); });
    begun.get_future().wait();
    EXPECT_EQ(m_session.History().Forget("12345").end, ForgetEnd::NoSuchScan);
    const ForgetOutcome all = m_session.History().ForgetAll();
    EXPECT_EQ(all.end, ForgetEnd::InUse);
    EXPECT_EQ(all.forgotten, 1u);
    EXPECT_TRUE(std::filesystem::exists(used));
    EXPECT_FALSE(std::filesystem::exists(other));
    forgotten.set_value();
    EXPECT_EQ(scan.get().end, ScanEnd::Complete);
    scan = {};
    open.reset();
    EXPECT_EQ(m_session.History().ForgetAll().end, ForgetEnd::Done);
    EXPECT_FALSE(std::filesystem::exists(used));
}

}  // namespace
