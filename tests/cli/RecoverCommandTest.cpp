// Scan and restore from end to end, on real volumes.
#include "tests/cli/CliFixture.h"
#include "tests/support/FailingReader.h"
#include "tests/support/RunCommand.h"

namespace {

using RecoverCommandTest = CardFixture;
using Files = std::map<std::string, ByteVector>;

TEST_F(RecoverCommandTest, DeletedPicturesLandInTheirCategoryByteForByte)
{
    const std::filesystem::path out = m_folder / "out";
    const ByteVector before = ReadFileBytes(m_card->ImagePath());
    const Outcome outcome = RunFast({"recover", Card(), out.string() + "/"});
    EXPECT_TRUE(before == ReadFileBytes(m_card->ImagePath())) << "the source was written to";
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("4 files found, 4 restored"), std::string::npos) << outcome.out;
    Files files = FilesBelow(out);
    // Two have one name: which of them comes first is open.
    ASSERT_EQ(files.size(), 4u);
    const Files firsts = {{"1", files["photo/first picture.jpg"]},
                          {"2", files["photo/first picture(1).jpg"]}};
    EXPECT_TRUE((firsts == Files{{"1", m_originals["first picture.jpg"]},
                                 {"2", m_originals["Lake/first picture.jpg"]}}) ||
                (firsts == Files{{"1", m_originals["Lake/first picture.jpg"]},
                                 {"2", m_originals["first picture.jpg"]}}));
    EXPECT_EQ(files["photo/second picture.png"], m_originals["Lake/second picture.png"]);
    EXPECT_EQ(files["photo/third picture.bmp"], m_originals["Old/third picture.bmp"]);
}

TEST_F(RecoverCommandTest, ListsInJsonWithPathStoreAndTimes)
{
    const Outcome outcome = RunFast({"list", Card(), "--types", "all", "--json", "--quiet"});
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

TEST_F(RecoverCommandTest, TheProgramGivesTheStatusToTheShell)
{
    const std::filesystem::path program = LUMIVAULT_CLI;
    const std::string dataFolder = (m_folder / "data").string();
    EXPECT_EQ(RunCommand({program.string(), "scan", Card(), "--data-dir", dataFolder}).exitStatus,
              0);
    EXPECT_EQ(
        RunCommand({program.string(), "scan", "/no/such", "--data-dir", dataFolder}).exitStatus, 3);
    WriteFileBytes(m_folder / "short", ByteVector(16383));
    WriteFileBytes(m_folder / "noise", RandomBytes(1 << 20, 9));
    EXPECT_NE(RunFast({"scan", (m_folder / "short").string()}).err.find("shorter than 16 KB"),
              std::string::npos);
    EXPECT_NE(RunFast({"scan", (m_folder / "noise").string()}).err.find("no file system"),
              std::string::npos);
    const CommandResult none = RunCommand({program.string()});
    EXPECT_EQ(none.exitStatus, 2);
    EXPECT_NE(none.err.find("lumivault-cli: "), std::string::npos);
}

TEST_F(RecoverCommandTest, TreeKeepsFoldersAndNeverReplacesWhatIsThere)
{
    const std::filesystem::path out = m_folder / "out";
    std::filesystem::create_directories(out / "elsewhere");
    // A link where a folder is needed leads out of the destination: it is not followed.
    std::filesystem::create_directory_symlink(m_folder / "data", out / "Lake");
    std::filesystem::create_symlink("nowhere", out / "first picture.jpg");
    const Outcome outcome =
        RunFast({"recover", Card(), out.string(), "--tree", "--types", "all", "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const Files files = FilesBelow(out);
    Files expected = m_originals;
    expected.erase("living.png");
    expected["first picture(1).jpg"] = expected["first picture.jpg"];
    expected.erase("first picture.jpg");
    for (const char* name : {"second picture.png", "first picture.jpg"}) {
        expected["Lake(1)/" + std::string(name)] = m_originals["Lake/" + std::string(name)];
        expected.erase("Lake/" + std::string(name));
    }
    EXPECT_TRUE(files == expected) << outcome.out;
    EXPECT_TRUE(FilesBelow(m_folder / "data").count("first picture.jpg") == 0);
    const Json::Value report = Parse(outcome.out);
    EXPECT_EQ(report["restored"].asInt(), 7);
    for (const Json::Value& file : report["files"]) {
        EXPECT_EQ(ReadFileBytes(file["restoredTo"].asString()).size(), file["size"].asUInt64());
        EXPECT_TRUE(file["error"].isNull());
    }
}

TEST_F(RecoverCommandTest, WhatCannotBeReadEndsAFileOrBecomesZeros)
{
    const ByteVector& picture = m_originals["first picture.jpg"];
    FailingReader source;
    const std::uint64_t bad = ImageFile(m_card->ImagePath()).Find(picture) + 5 * 512;
    source.FailBytes(bad, bad + 512);
    const Outcome cut = RunFast({"recover", Card(), (m_folder / "cut").string(), "--tree"});
    EXPECT_EQ(cut.status, 1);
    const std::string missing = std::to_string(picture.size() - 5 * 512) + " of " +
                                std::to_string(picture.size()) + " bytes are missing.\n";
    EXPECT_NE(cut.err.find("read. Damaged: " + missing), std::string::npos) << cut.err;
    EXPECT_EQ(FilesBelow(m_folder / "cut").at("first picture.jpg").size(), 5u * 512);

    const Outcome filled = RunFast({"recover", Card(), (m_folder / "filled").string(), "--tree",
                                    "--fill-unreadable", "--json"});
    EXPECT_EQ(filled.status, 1);
    ByteVector expected = picture;
    std::fill_n(expected.begin() + 5 * 512, 512, std::uint8_t{0});
    EXPECT_EQ(FilesBelow(m_folder / "filled").at("first picture.jpg"), expected);
    const Json::Value report = Parse(filled.out);
    EXPECT_EQ(report["incomplete"].asInt(), 1);
    EXPECT_EQ(report["restored"].asInt(), 3);
    EXPECT_NE(filled.err.find("first picture.jpg: Incomplete: 512 of"), std::string::npos);
}

TEST_F(RecoverCommandTest, AReaderThatGoesAwayStopsNothingAndNoStreamLandsInAFile)
{
    const std::string run = "\"$@\" ";
    const std::vector<std::string> program = {LUMIVAULT_CLI,
                                              "recover",
                                              Card(),
                                              "--fast",
                                              "--json",
                                              "--data-dir",
                                              (m_folder / "data").string()};
    const auto shell = [&](const std::string& script, const std::string& folder) {
        std::vector<std::string> arguments = {"bash", "-c", script, "sh"};
        arguments.insert(arguments.end(), program.begin(), program.end());
        arguments.push_back((m_folder / folder).string());
        return RunCommand(arguments);
    };
    const CommandResult piped = shell(run + "| true; echo ${PIPESTATUS[0]}", "piped");
    EXPECT_EQ(piped.out, "0\n") << piped.err;
    EXPECT_EQ(piped.err.find("could not be written"), std::string::npos) << piped.err;
    EXPECT_EQ(FilesBelow(m_folder / "piped").size(), 4u);
    EXPECT_EQ(shell(run + ">&- <&- 2>&-", "closed").exitStatus, 0);
    EXPECT_EQ(FilesBelow(m_folder / "closed").size(), 4u);
    EXPECT_TRUE(ReadFileBytes(m_folder / "data/OrvantaLumivault/in-use.lock").empty());
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(shell(run + "> /dev/full", "full").exitStatus, 2);
    }
}

TEST_F(RecoverCommandTest, AFileThatCannotBeWrittenWholeCountsAsFailed)
{
    // No file may grow beyond 16 blocks of 512 bytes: one picture does not fit.
    const CommandResult result =
        RunCommand({"sh", "-c", "trap '' XFSZ; ulimit -f 16; exec \"$@\"", "sh", LUMIVAULT_CLI,
                    "recover", Card(), (m_folder / "out").string(), "--types", "jpg", "--data-dir",
                    (m_folder / "data").string()});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.out.find("2 files found, 1 restored"), std::string::npos) << result.out;
    EXPECT_NE(result.err.find("too large"), std::string::npos) << result.err;
}

TEST_F(RecoverCommandTest, ADeviceIsScannedAndGuardedAgainstRestoringOntoIt)
{
    const CommandResult attached = RunCommand({"losetup", "-f", "--show", Card()});
    if (attached.exitStatus != 0) {
        GTEST_SKIP() << "no loop device may be made here: " << attached.err;
    }
    const std::string device = attached.out.substr(0, attached.out.find('\n'));
    const std::filesystem::path mountPoint = m_folder / "mounted";
    std::filesystem::create_directories(mountPoint);
    EXPECT_EQ(RunFast({"recover", device, (m_folder / "out").string()}).status, 0);
    EXPECT_EQ(FilesBelow(m_folder / "out")["photo/third picture.bmp"],
              m_originals["Old/third picture.bmp"]);
    if (RunCommand({"mount", "-o", "ro", device, mountPoint.string()}).exitStatus == 0) {
        for (const std::string& target : {device, Card()}) {
            const Outcome outcome = RunFast({"recover", target, (mountPoint / "new/out").string()});
            EXPECT_EQ(outcome.status, 2) << target;
            EXPECT_NE(outcome.err.find("lies on the source"), std::string::npos) << outcome.err;
            // With force it is tried, and here the file system is read-only.
            const Outcome forced =
                RunFast({"recover", target, (mountPoint / "new/out").string(), "--force"});
            EXPECT_EQ(forced.err.find("lies on the source"), std::string::npos) << forced.err;
            EXPECT_EQ(forced.status, 2);
        }
        MustRun({"umount", mountPoint.string()});
    }
    MustRun({"losetup", "-d", device});
}

}  // namespace
