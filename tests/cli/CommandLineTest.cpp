#include "platform/FileHandle.h"
#include "platform/Folders.h"
#include "tests/cli/CliFixture.h"
#include "tests/support/RunCommand.h"

#include <algorithm>

namespace {

using CommandLineTest = CliFixture;

TEST_F(CommandLineTest, EveryRefusalHasItsStatusAndSaysWhatToDo)
{
    WriteFileBytes(m_folder / "short", ByteVector(16383));
    WriteFileBytes(m_folder / "noise", RandomBytes(1 << 20, 9));
    WriteFileBytes(m_folder / "file", {});
    const std::string out = (m_folder / "out").string();
    struct RefusalCase
    {
        std::vector<std::string> arguments;
        int status;
        std::string_view says;
    };
    const std::vector<RefusalCase> cases = {
        {{}, 2, "--help"},
        {{"frobnicate"}, 2, "--help"},
        {{"scan"}, 2, "TARGET is required"},
        {{"recover", Card()}, 2, "FOLDER is required"},
        {{"scan", Card(), "--fats"}, 2, "--help"},
        {{"list", Card(), "--types", "jpg,,png"}, 2, "--types photo,pdf"},
        {{"list", Card(), "--types", "a/b"}, 2, "--types photo,pdf"},
        {{"list", Card(), "--types", "tar.gz"}, 2, "--types photo,pdf"},
        {{"scan", "#one"}, 2, "and a number"},
        {{"scan", "#9999"}, 3, "there is no target #9999"},
        {{"image", Card(), "new.img"}, 2, "can be scanned as it is"},
        {{"image", "/dev/null", "new.img"}, 3, "neither a file nor a block device"},
        {{"scan", out + "/nothing"}, 3, "there is no such file"},
        {{"scan", (m_folder / "short").string()}, 3, "shorter than 16 KB"},
        {{"scan", (m_folder / "noise").string()}, 3, "no file system"},
        {{"scan", m_folder.Path().string()}, 3, "neither a file nor a block device"},
        {{"scan", "/dev/null"}, 3, "neither a file nor a block device"},
        {{"recover", Card(), (m_folder / "file").string()}, 2, "Choose another folder"},
        {{"recover", Card(), (m_folder / "file/below").string()}, 2, "Choose another folder"},
        {{"recover", (m_folder / "noise").string(), out}, 3, "no file system"},
    };
    for (const RefusalCase& row : cases) {
        const Outcome outcome = Run(row.arguments);
        const std::string shown = row.arguments.empty() ? "" : row.arguments.back();
        EXPECT_EQ(outcome.status, row.status) << shown;
        EXPECT_NE(outcome.err.find(row.says), std::string::npos) << shown << ": " << outcome.err;
        EXPECT_TRUE(outcome.err.starts_with("lumivault-cli: ")) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_FALSE(PathExists(out)) << "a target that cannot be scanned makes no folder";
}

TEST_F(CommandLineTest, TwoScansDoNotShareADataFolder)
{
    EXPECT_EQ(Run({"scan", Card()}).status, 0);
    FileHandle lock;
    ASSERT_EQ(lock.OpenForReading(m_folder / "data/OrvantaLumivault/in-use.lock"), ResultSuccess);
    ASSERT_TRUE(lock.TryLock());
    const Outcome outcome = Run({"scan", Card()});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("another scan uses"), std::string::npos) << outcome.err;
}

TEST_F(CommandLineTest, ListsInJsonWithPathStoreAndTimes)
{
    const Outcome outcome = Run({"list", Card(), "--types", "all", "--json", "--quiet"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    const Json::Value report = Parse(outcome.out);
    EXPECT_EQ(report["target"].asString(), Card());
    EXPECT_EQ(report["found"].asInt(), 7);
    EXPECT_EQ(report["restored"].asInt(), 0);
    std::map<std::string, Json::Value> byPath;
    for (const Json::Value& file : report["files"]) {
        byPath[file["path"].asString() + file["name"].asString()] = file;
    }
    const Json::Value& file = byPath["Lake\\second picture.png"];
    ASSERT_TRUE(file.isObject()) << outcome.out;
    EXPECT_EQ(file["size"].asUInt64(), m_originals["Lake/second picture.png"].size());
    EXPECT_EQ(file["engine"].asString(), "fast-fat");
    EXPECT_TRUE(file["headIntact"].asBool());
    EXPECT_TRUE(file["restoredTo"].isNull());
    EXPECT_EQ(file["written"].asString().size(), 19u);
    // The store's name and the record number lead to the record itself.
    const ByteVector store =
        ReadFileBytes(m_folder / "data/OrvantaLumivault/ScanLog/1" / file["store"].asString());
    const std::size_t place = (file["record"].asUInt() - 1) * std::size_t{346};
    ASSERT_LE(place + 346, store.size());
    const std::string_view name = "second picture.png";
    EXPECT_TRUE(std::equal(name.begin(), name.end(),
                           store.begin() + static_cast<std::ptrdiff_t>(place + 86)));
}

TEST_F(CommandLineTest, TypesTakeExtensionsExactlyAndFamiliesByTheCatalogue)
{
    const std::vector<std::pair<std::string, int>> cases = {
        {"photo", 4},  // three kinds of picture
        {"jpg", 2},
        {"JPG,.bmp,*.txt", 4},
        {"jp", 0},  // no substring rule for names given
        {"document", 1},
        {"others", 1},  // data.xyz; a name without extension is no file of any type
        {"others,jpg", 3},
        {"photo,others,document", 6},
        {"all", 7},
    };
    for (const auto& [types, count] : cases) {
        EXPECT_EQ(Parse(Run({"list", Card(), "--json", "--types", types}).out)["found"].asInt(),
                  count)
            << types;
    }
}

TEST_F(CommandLineTest, AListWithoutJsonIsOneLineAFileAndSafeForATerminal)
{
    // A long name whose letters become an escape sequence and a C1 control, as a hostile card may hold.
    const ImageFile image(m_card->ImagePath());
    ByteVector bytes = image.Read(0, image.SizeBytes());
    const ByteVector pattern = Bytes("'p' 00 'i' 00 'c' 00");  // of "first picture.jpg"
    const auto at = std::search(bytes.begin(), bytes.end(), pattern.begin(), pattern.end());
    ASSERT_NE(at, bytes.end());
    image.PutAt(static_cast<std::uint64_t>(at - bytes.begin()), Bytes("1B 00 9B 00 'c' 00"));
    const Outcome outcome = Run({"list", Card()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out.find('\x1b'), std::string::npos);
    EXPECT_EQ(outcome.out.find("\xC2\x9B"), std::string::npos);
    EXPECT_NE(outcome.out.find("first ??cture.jpg"), std::string::npos) << outcome.out;
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 5) << outcome.out;
}

TEST_F(CommandLineTest, ScanShowsFamiliesAndProgressOnlyOnATerminal)
{
    const Outcome plain = Run({"scan", Card()});
    EXPECT_NE(plain.out.find("photo     jpg                 2"), std::string::npos) << plain.out;
    EXPECT_NE(plain.out.find("all                           7"), std::string::npos) << plain.out;
    EXPECT_EQ(plain.err, "");
    const Outcome terminal = Run({"scan", Card()}, true);
    EXPECT_NE(terminal.err.find("Scanning: "), std::string::npos);
    EXPECT_TRUE(terminal.err.ends_with("\r\x1b[K")) << "the line is cleared at the end";
    EXPECT_EQ(Run({"scan", Card(), "--quiet"}, true).err, "");
}

TEST_F(CommandLineTest, HelpVersionAndTargetsSucceed)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"recover", "--help"}, {"list", "--help"}}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_NE(outcome.out.find("Examples:"), std::string::npos) << outcome.out;
    }
    EXPECT_TRUE(Run({"--version"}).out.starts_with("lumivault-cli "));
    EXPECT_TRUE(Parse(Run({"targets", "--json"}).out)["targets"].isArray());
}

TEST_F(CommandLineTest, TheProgramGivesTheStatusToTheShell)
{
    const std::filesystem::path program = LUMIVAULT_CLI;
    const std::string dataFolder = (m_folder / "data").string();
    EXPECT_EQ(RunCommand({program.string(), "scan", Card(), "--data-dir", dataFolder}).exitStatus,
              0);
    EXPECT_EQ(
        RunCommand({program.string(), "scan", "/no/such", "--data-dir", dataFolder}).exitStatus, 3);
    const CommandResult none = RunCommand({program.string()});
    EXPECT_EQ(none.exitStatus, 2);
    EXPECT_NE(none.err.find("lumivault-cli: "), std::string::npos);
}

}  // namespace
