// The real player, without screen and loudspeaker.
#include "app/player/Players.h"

#include "platform/Confinement.h"
#include "platform/Folders.h"
#include "tests/support/Bytes.h"
#include "tests/support/RunCommand.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <sys/socket.h>
#include <thread>

namespace {

using std::chrono::milliseconds;

class PlayersTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        IgnoreBrokenPipes();
        AddPlayerArguments({"--vo=null", "--ao=null"});
    }
    void SetUp() override
    {
        if (!PathExists("/usr/bin/mpv")) {
            GTEST_SKIP() << "no mpv here";
        }
        KillPlayers();
    }
    void TearDown() override
    {
        KillPlayers();
        WaitForPlayerThreads();
    }

    std::filesystem::path Clip(const std::string& name, int seconds)
    {
        const auto path = m_folder / name;
        MustRun({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=size=64x48:rate=10", "-t",
                 std::to_string(seconds), path.string()});
        return path;
    }
    // Whether the player said that the file cannot be played.
    static bool FailsToPlay(const std::filesystem::path& path)
    {
        std::atomic<bool> failed = false;
        StartVideo(path, [&failed] { failed = true; });
        WaitForPlayerThreads();
        return failed;
    }
    static bool Runs(const std::string& name)
    {
        return RunCommand({"pgrep", "-x", name}).exitStatus == 0;
    }

    TempFolder m_folder;
};

TEST_F(PlayersTest, AClipPlaysOnAfterItsStartIsSeenUntilItIsKilled)
{
    EXPECT_FALSE(FailsToPlay(Clip("with blank 100%.avi", 20)));
    std::this_thread::sleep_for(milliseconds(500));  // a closed pipe must not end it
    EXPECT_TRUE(Runs("Player"));
    KillPlayers();
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_FALSE(Runs("Player"));
}

TEST_F(PlayersTest, WhatIsNoClipIsToldHoweverItIsCalled)
{
    WriteFileBytes(m_folder / "100% noise.avi", ByteVector(100000, 0xA7));
    WriteFileBytes(m_folder / "empty.avi", {});
    ByteVector cut = ReadFileBytes(Clip("clip.avi", 1));
    std::fill(cut.begin() + 1000, cut.end(), 0x5B);
    WriteFileBytes(m_folder / "head only.avi", cut);
    for (const char* name : {"100% noise.avi", "empty.avi", "head only.avi", "not there %.avi"}) {
        EXPECT_TRUE(FailsToPlay(m_folder / name)) << name;
    }
}

TEST_F(PlayersTest, AKilledPlayerHasNotFailed)
{
    // A pipe without a writer: the player waits for its first byte.
    MustRun({"mkfifo", (m_folder / "waits.avi").string()});
    std::atomic<bool> failed = false;
    StartVideo(m_folder / "waits.avi", [&failed] { failed = true; });
    std::this_thread::sleep_for(milliseconds(500));
    KillPlayers();
    WaitForPlayerThreads();
    EXPECT_FALSE(failed);
}

TEST_F(PlayersTest, SoundPlaysUnderItsOwnNameAndOtherPlayersAreLeftAlone)
{
    const auto tone = m_folder / "tone.mp3";
    MustRun({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=20", tone.string()});
    LaunchedProgram ofTheUser;
    ASSERT_EQ(
        ofTheUser.Start("/usr/bin/mpv", {"--no-config", "--idle", "--vo=null", "--ao=null"}, false),
        ResultSuccess);
    StartAudio(tone);
    std::this_thread::sleep_for(milliseconds(500));
    EXPECT_TRUE(Runs("Player1"));
    KillPlayers();
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_FALSE(Runs("Player1"));
    EXPECT_FALSE(ofTheUser.HasEnded());
    RunCommand({"pkill", "-x", "mpv"});
}

// Listens, and counts who comes.
class Listener
{
public:
    Listener() : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(m_socket.Descriptor(), generic, length), 0);
        EXPECT_EQ(::listen(m_socket.Descriptor(), 8), 0);
        EXPECT_EQ(::getsockname(m_socket.Descriptor(), generic, &length), 0);
        m_port = ntohs(address.sin_port);
    }
    std::string Address() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/x.mp4"; }
    bool SomebodyCame() const
    {
        pollfd state = {m_socket.Descriptor(), POLLIN, 0};
        return ::poll(&state, 1, 0) > 0;
    }

private:
    FileHandle m_socket;
    int m_port = 0;
};

TEST_F(PlayersTest, NoFileMakesItOpenAConnection)
{
    const Listener listener;
    const std::string there = listener.Address();
    const std::pair<const char*, std::string> files[] = {
        {"list.m3u", "#EXTM3U\n#EXTINF:1,x\n" + there + "\n"},
        {"plain.m3u", there + "\n"},
        {"stream.m3u8",
         "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + there + "\n#EXT-X-ENDLIST\n"},
        {"list.pls", "[playlist]\nFile1=" + there + "\nNumberOfEntries=1\n"},
        {"edit.edl", "# mpv EDL v0\n" + there + "\n"},
        {"sheet.cue", "FILE \"" + there + "\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"},
        {"reference.asx", "[Reference]\nRef1=" + there + "\n"},
        {"parts.txt", "ffconcat version 1.0\nfile '" + there + "'\n"},
        {"session.sdp", "v=0\nc=IN IP4 127.0.0.1\nm=video 9 RTP/AVP 96\na=rtpmap:96 H264/90000\n"},
        {"manifest.mpd", "<?xml version=\"1.0\"?><MPD><Period><AdaptationSet><Representation>"
                         "<BaseURL>" +
                             there + "</BaseURL></Representation></AdaptationSet></Period></MPD>"},
    };
    for (const auto& [name, text] : files) {
        WriteFileBytes(m_folder / "tmp.avi", ByteVector(text.begin(), text.end()));
        FailsToPlay(m_folder / "tmp.avi");
        std::this_thread::sleep_for(milliseconds(300));
        EXPECT_FALSE(listener.SomebodyCame()) << name;
        KillPlayers();
    }
}

TEST_F(PlayersTest, WhatStartsItHasGivenUpTheNetwork)
{
    std::thread([] {
        ASSERT_EQ(RefuseNetwork(), ResultSuccess);
        for (const int family : {AF_INET, AF_INET6, AF_PACKET, 43}) {
            EXPECT_FALSE(FileHandle(::socket(family, SOCK_STREAM, 0)).IsOpen()) << family;
            EXPECT_EQ(errno, EACCES) << family;
        }
        EXPECT_TRUE(FileHandle(::socket(AF_UNIX, SOCK_STREAM, 0)).IsOpen())
            << "its window, its sound";
    }).join();
    EXPECT_TRUE(FileHandle(::socket(AF_INET, SOCK_STREAM, 0)).IsOpen()) << "other threads have it";
    // An address that it is told itself, past all that keeps files from naming one.
    const Listener listener;
    AddPlayerArguments({listener.Address()});
    FailsToPlay(m_folder / "not there.avi");
    EXPECT_FALSE(listener.SomebodyCame());
}

}  // namespace
