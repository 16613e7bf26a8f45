#include "tests/cli/CliFixture.h"
#include "tests/support/FailingReader.h"
#include "tests/support/RunCommand.h"

#include <csignal>

namespace {

using RecoverCommandTest = CliFixture;
using Files = std::map<std::string, ByteVector>;

TEST_F(RecoverCommandTest, DeletedPicturesLandInTheirCategoryByteForByte)
{
    const std::filesystem::path out = m_folder / "out";
    const Outcome outcome = Run({"recover", Card(), out.string() + "/"});
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

TEST_F(RecoverCommandTest, TreeKeepsFoldersAndNeverReplacesWhatIsThere)
{
    const std::filesystem::path out = m_folder / "out";
    std::filesystem::create_directories(out / "elsewhere");
    // A link where a folder is needed leads out of the destination: it is not followed.
    std::filesystem::create_directory_symlink(m_folder / "data", out / "Lake");
    std::filesystem::create_symlink("nowhere", out / "first picture.jpg");
    const Outcome outcome =
        Run({"recover", Card(), out.string(), "--tree", "--types", "all", "--json"});
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

TEST_F(RecoverCommandTest, AFileThatCannotBeReadIsTheOnlyOneThatFails)
{
    FailingReader reader;
    const ImageFile image(m_card->ImagePath());
    const ByteVector& broken = m_originals["Old/third picture.bmp"];
    reader.FailBytes(image.Find({broken.data(), 512}) + 4096,
                     image.Find({broken.data(), 512}) + 4608);
    const std::filesystem::path out = m_folder / "out";
    const Outcome outcome = Run({"recover", Card(), out.string(), "--json", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("third picture.bmp: The disk could not be read."), std::string::npos)
        << outcome.err;
    const Json::Value report = Parse(outcome.out);
    EXPECT_EQ(report["found"].asInt(), 4);
    EXPECT_EQ(report["restored"].asInt(), 3);
    EXPECT_EQ(report["failed"].asInt(), 1);
    for (const Json::Value& file : report["files"]) {
        EXPECT_EQ(file["error"].isNull(), file["name"].asString() != "third picture.bmp");
    }
    EXPECT_EQ(FilesBelow(out)["photo/second picture.png"], m_originals["Lake/second picture.png"]);
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

TEST_F(RecoverCommandTest, InterruptDuringTheRestoreKeepsWhatWasRestored)
{
    FailingReader reader;
    const ImageFile image(m_card->ImagePath());
    const ByteVector& picture = m_originals["Lake/second picture.png"];
    // Its head is read twice by the scan, to find and to judge it.
    reader.OnReadAt(image.Find({picture.data(), 512}), 3, [] { std::raise(SIGINT); });
    const std::filesystem::path out = m_folder / "out";
    const Outcome outcome = Run({"recover", Card(), out.string(), "--json"});
    EXPECT_EQ(outcome.status, 130);
    EXPECT_NE(outcome.err.find("Cancelled; what was restored until then is kept."),
              std::string::npos);
    const Json::Value report = Parse(outcome.out);
    EXPECT_TRUE(report["cancelled"].asBool());
    EXPECT_EQ(report["found"].asInt(), 4);
    EXPECT_EQ(report["restored"].asInt(), 2);  // the two in front of it in name order
    const Files files = FilesBelow(out);
    EXPECT_EQ(files.count("photo/first picture.jpg"), 1u);
    EXPECT_EQ(files.count("photo/third picture.bmp"), 0u);
}

TEST_F(RecoverCommandTest, InterruptDuringTheScanKeepsWhatWasFoundAndRestoresNothing)
{
    FailingReader reader;
    const ImageFile image(m_card->ImagePath());
    const ByteVector& picture = m_originals["Lake/first picture.jpg"];
    const std::uint64_t head = image.Find({picture.data(), 512});
    reader.OnReadAt(head, 1, [] { std::raise(SIGINT); });
    const Outcome listed = Run({"list", Card(), "--json"});
    EXPECT_EQ(listed.status, 130) << listed.err;
    const Json::Value report = Parse(listed.out);
    EXPECT_TRUE(report["cancelled"].asBool());
    EXPECT_GE(report["found"].asInt(), 1);
    EXPECT_NE(listed.err.find("Cancelled"), std::string::npos);

    reader.OnReadAt(head, 1, [] { std::raise(SIGINT); });
    const Outcome recovered = Run({"recover", Card(), (m_folder / "out").string()});
    EXPECT_EQ(recovered.status, 130);
    EXPECT_TRUE(FilesBelow(m_folder / "out").empty());
}

TEST_F(RecoverCommandTest, NothingOfTheSourceIsWritten)
{
    const ByteVector before = ReadFileBytes(m_card->ImagePath());
    EXPECT_EQ(Run({"recover", Card(), (m_folder / "out").string(), "--types", "all"}).status, 0);
    EXPECT_TRUE(before == ReadFileBytes(m_card->ImagePath()));
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
    EXPECT_EQ(Run({"recover", device, (m_folder / "out").string()}).status, 0);
    EXPECT_EQ(FilesBelow(m_folder / "out")["photo/third picture.bmp"],
              m_originals["Old/third picture.bmp"]);
    if (RunCommand({"mount", "-o", "ro", device, mountPoint.string()}).exitStatus == 0) {
        for (const std::string& target : {device, Card()}) {
            const Outcome outcome = Run({"recover", target, (mountPoint / "new/out").string()});
            EXPECT_EQ(outcome.status, 2) << target;
            EXPECT_NE(outcome.err.find("lies on the source"), std::string::npos) << outcome.err;
            // With force it is tried, and here the file system is read-only.
            const Outcome forced =
                Run({"recover", target, (mountPoint / "new/out").string(), "--force"});
            EXPECT_EQ(forced.err.find("lies on the source"), std::string::npos) << forced.err;
            EXPECT_EQ(forced.status, 2);
        }
        MustRun({"umount", mountPoint.string()});
    }
    MustRun({"losetup", "-d", device});
}

}  // namespace
