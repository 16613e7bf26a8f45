// What the command line takes, says and gives back, with engines that do as a test tells them.
#include "cli/ProgressLine.h"
#include "cli/RescueRun.h"
#include "cli/TextForms.h"
#include "platform/FileHandle.h"
#include "platform/Folders.h"
#include "platform/Version.h"
#include "tests/cli/CliFixture.h"
#include "tests/support/FakeEngines.h"

#include <algorithm>
#include <csignal>

namespace {

class CommandLineTest : public CliFixture
{
protected:
    CommandLineTest()
    {
        m_engines = std::make_shared<FakeEngines>(m_script);
        WriteFileBytes(m_card, {});
        m_script.logFolder = m_folder / "log";
        m_script.folders = "Lake\\";
        m_script.content = Bytes("'data'");
        for (const char* name : {"a.jpg", "b.jpg", "c.png", "d.txt"}) {
            m_script.Add(name, 4);
        }
    }

    std::string Out() const { return (m_folder / "out").string(); }

    FakeScript m_script;
    const std::string m_card = (m_folder / "card.img").string();
};

TEST_F(CommandLineTest, EveryRefusalHasItsStatusAndSaysWhatToDo)
{
    WriteFileBytes(m_folder / "file", {});
    struct RefusalCase
    {
        std::vector<std::string> arguments;
        int status;
        std::string_view says;
        ResultCode opens = ResultSuccess;
        bool recognised = true;
        ResultCode scans = ResultSuccess;
    };
    const std::vector<RefusalCase> cases = {
        {{}, 2, "--help"},
        {{"frobnicate"}, 2, "--help"},
        {{"scan"}, 2, "TARGET is required"},
        {{"recover", m_card}, 2, "FOLDER is required"},
        {{"scan", m_card, "--fats"}, 2, "--help"},
        {{"scan", m_card, "--new", "--resume"}, 2, "--help"},
        {{""}, 2, "The command is empty; commands are targets, scan"},
        {{m_card}, 2, "is no command; to see what can be found there: lumivault-cli scan '"},
        {{"recover", m_card, ""}, 2, "FOLDER is empty"},
        {{"list", m_card, "--types", "jpg, foo"}, 2, "'foo' is no type. Types are photo (bmp, gif"},
        {{"list", m_card, "--types", "jpg,,png"}, 2, "'jpg,,png' is no list of types"},
        {{"recover", m_card, Out(), "--types", "a/b"}, 2, "--types photo,pdf"},
        {{"forget"}, 2, "tell which scan"},
        {{"forget", "12345"}, 2, "there is no scan number 12345"},
        {{"scan", "#one"}, 2, "and a number"},
        {{"scan", "#9999"}, 3, "there is no target #9999"},
        {{"image", m_card, "new.img"}, 2, "can be scanned as it is"},
        {{"image", "/dev/null", "new.img"}, 3, "neither a file nor a block device"},
        {{"scan", m_folder.Path().string()}, 3, "neither a file nor a block device"},
        {{"scan", Out() + "/nothing"}, 3, "there is no such file"},
        {{"scan", m_card}, 3, "shorter than 16 KB", ResultShortRead},
        {{"scan", m_card}, 3, "with sudo", ResultAccessDenied},
        {{"scan", m_card}, 3, "package pkexec", ResultNotSupported},
        {{"scan", m_card}, 3, "it cannot be read: The disk", ResultReadFault},
        {{"recover", m_card, Out()}, 3, "no file system", ResultSuccess, false},
        {{"recover", m_card, (m_folder / "file").string()}, 2, "Choose another folder"},
        {{"recover", m_card, (m_folder / "file/below").string()}, 2, "Choose another folder"},
        {{"list", m_card}, 3, "it could not be scanned: The disk", 0, true, ResultReadFault},
        {{"list", m_card}, 3, "not enough memory", 0, true, ResultOutOfMemory},
    };
    m_script.records.clear();
    for (const RefusalCase& row : cases) {
        m_script.opens = row.opens;
        m_script.recognised = row.recognised;
        m_script.scans = row.scans;
        m_script.inScan = [&row] {
            if (row.scans == ResultOutOfMemory) {
                throw std::bad_alloc();
            }
        };
        const Outcome outcome = RunAsGiven(row.arguments);
        const std::string shown = row.arguments.empty() ? "" : row.arguments.back();
        EXPECT_EQ(outcome.status, row.status) << shown;
        EXPECT_NE(outcome.err.find(row.says), std::string::npos) << shown << ": " << outcome.err;
        EXPECT_TRUE(outcome.err.starts_with("lumivault-cli: ")) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_FALSE(PathExists(Out())) << "a target that cannot be scanned makes no folder";
}

TEST_F(CommandLineTest, HelpAndTheVersionAreGivenAsPeopleAskForThem)
{
    for (const auto& [arguments, says] : std::map<std::vector<std::string>, std::string>{
             {{"help"}, "Exit status: 0 done"},
             {{"--help"}, "Examples:"},
             {{"list", "--help"}, "Examples:"},
             {{"help", "recover"}, "lumivault-cli recover card.img ./recovered"}}) {
        const Outcome outcome = RunAsGiven(arguments);
        EXPECT_EQ(outcome.status, 0) << arguments[0];
        EXPECT_NE(outcome.out.find(says), std::string::npos) << outcome.out;
    }
    EXPECT_EQ(RunAsGiven({"-v"}).out, std::string("lumivault-cli ") + LumivaultVersion + "\n");
    EXPECT_EQ(RunAsGiven({"-v"}).out, RunAsGiven({"--version"}).out);
}

TEST_F(CommandLineTest, AShellLearnsWhatMayStandNext)
{
    Session session;
    const auto linesFor = [&session](std::vector<std::string> words) {
        words.insert(words.begin(), "complete");
        std::ostringstream out;
        CommandStreams streams{out, out, false, nullptr};
        EXPECT_EQ(RunCommandLine(std::move(words), streams, session), ExitStatus::Done);
        return "\n" + out.str();
    };
    const struct
    {
        std::vector<std::string> words;
        std::string offered;
        std::string left;
    } cases[] = {{{""}, "\nforget\t", "--write-manual"},
                 {{"li"}, "\nlist\t", "\nscan\t"},
                 {{"scan", "--wh"}, "\n--whole\t", "--fast"},
                 {{"scan", ""}, "\nFILES\n", "--fast"},
                 {{"scan", "--data-dir", ""}, "\nFOLDERS\n", "FILES"},
                 {{"recover", "card.img", ""}, "\nFOLDERS\n", "FILES"},
                 {{"recover", "card.img", "to", "--types", "photo,mk"}, "\nphoto,mkv\n", "jpg"},
                 {{"image", "--retries", "3", "#1", ""}, "\nFILES\n", "\n#"},
                 {{"nonsense", ""}, "\n", "scan"}};
    for (const auto& one : cases) {
        const std::string lines = linesFor(one.words);
        EXPECT_NE(lines.find(one.offered), std::string::npos) << one.offered << " not in" << lines;
        EXPECT_EQ(lines.find(one.left), std::string::npos) << one.left << " in" << lines;
    }
}

TEST_F(CommandLineTest, NoLineOfProgressIsWiderThanTheWindow)
{
    ProgressFigures figures;
    figures.task = "Restoring";
    figures.percent = 42;
    figures.doneBytes = 1288490188;
    figures.totalBytes = 3221225472;
    figures.bytesPerSecond = 89128960;
    figures.elapsedSeconds = 12;
    figures.leftSeconds = 190;
    figures.count = "17 of 285 files";
    figures.place = "\u65E5\u672C\u8A9E.jpg";  // of two columns a sign
    for (std::size_t columns = 1; columns < 200; ++columns) {
        EXPECT_LE(ColumnsOf(CutToColumns(ProgressText(figures, columns), columns)), columns);
    }
    EXPECT_TRUE(ProgressText(figures, 39).ends_with(".] 3:10 left"));
    EXPECT_TRUE(
        ProgressText(figures, 79).ends_with(".] 1.2 GB of 3.0 GB, 3:10 left, 17 of 285 files"));
    EXPECT_TRUE(
        ProgressText(figures, 150)
            .ends_with(".] 1.2 GB of 3.0 GB, 85.0 MB/s, 0:12 elapsed, 3:10 left, 17 of 285 files, "
                       "\u65E5\u672C\u8A9E.jpg"));
}

TEST_F(CommandLineTest, ATableKeepsItsColumnsWhateverTheNames)
{
    m_script.Add("a." + std::string(240, 'x'), 5);
    m_script.Add("none", 5);
    const Outcome outcome = RunAsGiven({"scan", m_card});
    for (const char* line : {"others    (none)              1         5 B          0\n",
                             "others    xxxxxxxx...         1         5 B          0\n"}) {
        EXPECT_NE(outcome.out.find(line), std::string::npos) << outcome.out;
    }
}

TEST_F(CommandLineTest, TwoScansDoNotShareADataFolder)
{
    EXPECT_EQ(RunAsGiven({"scan", m_card}).status, 0);
    FileHandle lock;
    ASSERT_EQ(lock.OpenForReading(m_folder / "data/OrvantaLumivault/in-use.lock"), ResultSuccess);
    ASSERT_TRUE(lock.TryLock());
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"scan", m_card}, {"forget", "--all"}}) {
        const Outcome outcome = RunAsGiven(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.err.find("another scan uses"), std::string::npos) << outcome.err;
    }
}

TEST_F(CommandLineTest, AScanShowsFamiliesAndOnATerminalHowFarItIs)
{
    m_script.Add("headless.jpg", 2000, false);
    m_script.calls = {{40, 90, 65, 5, 10, 7}};
    const Outcome plain = RunAsGiven({"scan", m_card});
    EXPECT_EQ(plain.out, "Family    Extension       Files        Size  Head lost\n"
                         "photo     jpg                 3      2.0 KB          1\n"
                         "photo     png                 1         4 B          0\n"
                         "document  txt                 1         4 B          0\n"
                         "all                           5      2.0 KB          1\n");
    EXPECT_EQ(plain.err, "");
    EXPECT_EQ(RunAsGiven({"scan", m_card}, true).err,
              "\r\x1b[KScanning  36% [####........] 2.5 KB of 5.0 KB, 0:00 elapsed, 1:05 left, "
              "7 found\r\x1b[K");
    m_script.calls = {{50, 9, 30}};
    EXPECT_EQ(RunAsGiven({"scan", m_card}, true).err,
              "\r\x1b[KScanning   4% [#.......................................] 0:00 elapsed, 5 "
              "found\r\x1b[K")
        << "the quick part's estimate is of that part alone";
    EXPECT_EQ(RunAsGiven({"scan", m_card, "--quiet"}, true).err, "");
}

TEST_F(CommandLineTest, AListWithoutJsonIsOneLineAFileAndSafeForATerminal)
{
    m_script.Add("\x1b\xC2\x9B[2Jcture.jpg", 1);  // an escape sequence and a C1 control
    const Outcome outcome = RunAsGiven({"list", m_card, "--types", "photo"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out.find('\x1b'), std::string::npos);
    EXPECT_EQ(outcome.out.find("\xC2\x9B"), std::string::npos);
    EXPECT_NE(outcome.out.find(" Lake/??[2Jcture.jpg\n"), std::string::npos) << outcome.out;
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 5) << outcome.out;
    EXPECT_EQ(outcome.err, "4 files of the types asked for.\n");
}

TEST_F(CommandLineTest, MarksThatTurnTheDirectionOfWritingAreShownEscaped)
{
    m_script.Add("photo\u202Egpj.exe\u2066.jpg", 1);
    m_script.Add("\u0645\u06CC\u200C\u062E.jpg", 1);  // a joiner that its script needs
    const Outcome outcome = RunAsGiven({"list", m_card, "--types", "jpg"});
    EXPECT_NE(outcome.out.find("photo\\u202Egpj.exe\\u2066.jpg"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("\u0645\u06CC\u200C\u062E.jpg"), std::string::npos);
}

TEST_F(CommandLineTest, IncompleteFilesAreCountedAndEndWithAStatus)
{
    m_script.records[1].FileSize = 9;
    const Outcome outcome = RunAsGiven({"recover", m_card, Out()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, Out() + "/photo/b.jpg: Incomplete: 5 of 9 bytes are missing.\n");
    EXPECT_EQ(outcome.out,
              "3 files found, 2 restored into " + Out() + ", 0 failed, 1 incomplete.\n");
    const Json::Value report = Parse(RunAsGiven({"recover", m_card, Out(), "--json"}).out);
    EXPECT_EQ(report["incomplete"].asInt(), 1);
    EXPECT_EQ(report["skipped"].asInt(), 2);
    EXPECT_EQ(report["restored"].asInt(), 0);
    EXPECT_EQ(report["files"][0]["state"], "skipped");
    EXPECT_EQ(report["files"][0]["restoredTo"], Out() + "/photo/a.jpg");
    EXPECT_EQ(report["files"][1]["state"], "incomplete");
    EXPECT_EQ(report["files"][1]["missing"].asInt(), 5);
    EXPECT_EQ(FilesBelow(Out()).size(), 3u) << "also the incomplete one is not written twice";
    EXPECT_EQ(Parse(RunAsGiven({"recover", m_card, Out(), "--json", "--again"}).out)["restored"],
              2);
}

TEST_F(CommandLineTest, AFullDestinationIsAskedAboutAndToldOnce)
{
    m_script.records[1].FileSize = UINT64_MAX / 2;
    const Outcome refused = RunAsGiven({"recover", m_card, Out()});
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.err.find("give --force"), std::string::npos) << refused.err;
    EXPECT_TRUE(FilesBelow(Out()).empty());
    m_script.restores = [](const FileRecord& record) {
        return record.NameText() == "a.jpg" ? ResultDiskFull : ResultSuccess;
    };
    std::istringstream yes("y\n");
    const Outcome full = RunAsGiven({"recover", m_card, Out()}, false, &yes);
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.out, "3 files found, 0 restored into " + Out() + ", 1 failed.\n");
    EXPECT_NE(full.err.find("is full; not tried: 2 files."), std::string::npos) << full.err;
    EXPECT_EQ(RunAsGiven({"recover", m_card, Out(), "--force"}).status, 1);
}

TEST_F(CommandLineTest, ALinkInPlaceOfTheRecordsFolderIsRefused)
{
    std::filesystem::create_directories(m_folder / "data");
    std::filesystem::create_directories(m_folder / "elsewhere");
    std::filesystem::create_directory_symlink(m_folder / "elsewhere",
                                              m_folder / "data/OrvantaLumivault");
    const Outcome outcome = RunAsGiven({"scan", m_card});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("OrvantaLumivault is a link"), std::string::npos) << outcome.err;
    EXPECT_TRUE(FilesBelow(m_folder / "elsewhere").empty());
}

TEST_F(CommandLineTest, ForgettingAllRemovesWhatNoEntryNames)
{
    const std::filesystem::path log = m_folder / "data/OrvantaLumivault/ScanLog";
    for (const char* name : {"7", "8x", "notes"}) {
        std::filesystem::create_directories(log / name);
        WriteFileBytes(log / name / "store", Bytes("00"));
    }
    const Outcome outcome = RunAsGiven({"forget", "--all"});
    EXPECT_EQ(outcome.err,
              "0 scans forgotten, and the records of 1 scan that the log does not list.\n");
    EXPECT_FALSE(PathExists(log / "7"));
    EXPECT_TRUE(PathExists(log / "8x/store"));
    EXPECT_TRUE(PathExists(log / "notes/store"));
}

TEST_F(CommandLineTest, AFileThatCannotBeReadIsTheOnlyOneThatFails)
{
    m_script.restores = [](const FileRecord& record) {
        return record.NameText() == "b.jpg" ? ResultReadFault : ResultSuccess;
    };
    const Outcome outcome = RunAsGiven({"recover", m_card, Out(), "--json", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, Out() + "/photo/b.jpg: The disk could not be read. Damaged: 2 of 4 "
                                   "bytes are missing.\n");
    const Json::Value report = Parse(outcome.out);
    EXPECT_EQ(report["found"].asInt(), 3);
    EXPECT_EQ(report["restored"].asInt(), 2);
    EXPECT_EQ(report["failed"].asInt(), 1);
    EXPECT_FALSE(report["cancelled"].asBool());
    const char* const names[] = {"a.jpg", "b.jpg", "c.png"};
    for (Json::ArrayIndex i = 0; i < 3; ++i) {
        const Json::Value& file = report["files"][i];
        EXPECT_EQ(file["restoredTo"], Out() + "/photo/" + names[i]);
        EXPECT_EQ(file["error"].isNull(), i != 1);
        EXPECT_EQ(file["state"], i != 1 ? "restored" : "damaged");
        EXPECT_EQ(file["missing"].asInt(), i != 1 ? 0 : 2);
        EXPECT_EQ(file["place"].asUInt(), i + 1);
    }
    const Outcome none = RunAsGiven({"recover", m_card, Out(), "--types", "zip"});
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.out, "0 files found, 0 restored into " + Out() + ", 0 failed.\n");
    EXPECT_NE(none.err.find("Nothing of the types zip was found"), std::string::npos) << none.err;
}

TEST_F(CommandLineTest, AnInterruptKeepsWhatWasRestored)
{
    m_script.restores = [](const FileRecord& record) {
        if (record.NameText() == "b.jpg") {
            std::raise(SIGINT);
        }
        return ResultSuccess;
    };
    const Outcome outcome = RunAsGiven({"recover", m_card, Out(), "--json"});
    EXPECT_EQ(outcome.status, 130);
    EXPECT_NE(outcome.err.find("b.jpg: Cancelled before its end. Damaged: 2 of 4 bytes"),
              std::string::npos);
    EXPECT_TRUE(outcome.err.ends_with("Cancelled; what was restored until then is kept.\n"));
    const Json::Value report = Parse(outcome.out);
    EXPECT_TRUE(report["cancelled"].asBool());
    EXPECT_EQ(report["found"].asInt(), 3);
    EXPECT_EQ(report["restored"].asInt(), 1);
    EXPECT_EQ(FilesBelow(Out()).at("photo/a.jpg"), m_script.content);
    EXPECT_EQ(FilesBelow(Out()).count("photo/c.png"), 0u);
}

TEST_F(CommandLineTest, AnInterruptOfTheScanShowsWhatWasFoundAndRestoresNothing)
{
    m_script.inScan = [this] {
        std::raise(SIGINT);
        m_script.scans = ResultCancelled;
    };
    const Outcome listed = RunAsGiven({"list", m_card, "--json"});
    EXPECT_EQ(listed.status, 130) << listed.err;
    EXPECT_TRUE(Parse(listed.out)["cancelled"].asBool());
    EXPECT_EQ(Parse(listed.out)["found"].asInt(), 3);
    EXPECT_NE(listed.err.find("--resume goes on from there"), std::string::npos) << listed.err;
    const Outcome recovered = RunAsGiven({"recover", m_card, Out()});
    EXPECT_EQ(recovered.status, 130);
    EXPECT_EQ(recovered.out, "3 files found, 0 restored into " + Out() + ", 0 failed.\n");
    EXPECT_TRUE(FilesBelow(Out()).empty());
}

TEST_F(CommandLineTest, AnEarlierScanIsTakenUnlessItIsDeclined)
{
    const Outcome none = RunAsGiven({"scan", m_card, "--resume"});
    EXPECT_NE(none.err.find("No earlier scan of this target"), std::string::npos) << none.err;
    struct AnswerCase
    {
        const char* option;
        const char* answer;
        std::string_view says;
        int discarded;
    };
    for (const AnswerCase& row :
         {AnswerCase{"--resume", "n\n", "Going on with an earlier scan (", 0},
          {"--new", "y\n", "", 1},
          {"-q", "\n", "Go on with it? [Y/n] ", 0},
          {"-q", "n\n", "Go on with it? [Y/n] ", 1}}) {
        ScanLogEntry& earlier = m_script.earlier.emplace();
        earlier.rangeLength = 1;  // not at its end
        m_script.discarded = 0;
        std::istringstream answers(row.answer);
        const Outcome outcome = RunAsGiven({"scan", m_card, row.option}, true, &answers);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_NE(outcome.err.find(row.says), std::string::npos) << outcome.err;
        EXPECT_EQ(m_script.discarded, row.discarded) << row.option << row.answer;
    }
}

TEST(RescueText, SaysWhatHangsAndShowsAStripWhereThereIsRoom)
{
    RescueProgress progress;
    progress.totalBytes = 1000000;
    progress.rescuedBytes = 999999;
    progress.badBytes = 512;
    progress.secondsSinceGood = 65;
    progress.badPlaces = [] { return std::size_t{1}; };
    progress.strip = [](std::size_t cells) { return std::string(cells, '+'); };
    const std::string text =
        "Rescuing, pass 1: 99%, 976.6 KB rescued, 512 B bad in 1 place, 0 B/s, "
        "last good read 1:05 ago";
    EXPECT_EQ(RescueText(progress, 0), text);
    EXPECT_EQ(RescueText(progress, text.size() + 19), text);
    EXPECT_EQ(RescueText(progress, text.size() + 20), text + " [++++++++++++++++]");
    EXPECT_EQ(RescueText(progress, 500), text + " [" + std::string(60, '+') + "]");
    progress.readSeconds = 7;
    progress.step = RescueStep::Retrying;
    EXPECT_NE(RescueText(progress, 0).find("retry 1: 99%"), std::string::npos);
    EXPECT_NE(RescueText(progress, 0).find("a read hangs for 0:07"), std::string::npos);
}

}  // namespace
