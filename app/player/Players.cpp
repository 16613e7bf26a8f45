#include "app/player/Players.h"

#include "platform/Confinement.h"
#include "platform/Folders.h"
#include "platform/InstallPaths.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

namespace {

constexpr char VideoPlayer[] = "Player";
constexpr char AudioPlayer[] = "Player1";

// What both are told: a recovered file is hostile. No configuration, scripts or playlists of anybody, nothing but plain files is
// opened, whatever the file says, and no name in it is taken for a line of the player's own.
const std::vector<std::string>& CommonArguments()
{
    static const std::vector<std::string> arguments = {
        "--no-config",
        "--load-scripts=no",
        "--ytdl=no",
        "--no-resume-playback",
        "--no-input-terminal",
        "--access-references=no",
        "--autoload-files=no",

        "--demuxer=lavf",  // its own readers of playlists follow what stands in them
        "--demuxer-lavf-o=protocol_whitelist=[file,fd]",
        "--vo=gpu,x11",
        "--msg-level=all=fatal,statusline=status",
    };
    return arguments;
}

// Started players, so that none that has ended is left in the system's table, and the threads that watch.
class Registry
{
public:
    void Keep(LaunchedProgram player)
    {
        Reap(0);
        const std::lock_guard lock(m_mutex);
        m_players.push_back(std::make_unique<LaunchedProgram>(std::move(player)));
    }
    // Those that end within that time.
    void Reap(int waitMilliseconds)
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_players, [waitMilliseconds](const auto& one) {
            return one->HasEnded(waitMilliseconds);
        });
    }
    void ThreadBegins()
    {
        const std::lock_guard lock(m_mutex);
        ++m_threads;
    }
    void ThreadEnds()
    {
        const std::lock_guard lock(m_mutex);
        --m_threads;
        m_changed.notify_all();
    }
    void WaitForThreads()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_threads == 0; });
    }
    void AddArguments(std::vector<std::string> arguments)
    {
        const std::lock_guard lock(m_mutex);
        m_arguments.insert(m_arguments.end(), arguments.begin(), arguments.end());
    }
    std::vector<std::string> Arguments() const
    {
        const std::lock_guard lock(m_mutex);
        return m_arguments;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::unique_ptr<LaunchedProgram>> m_players;
    std::vector<std::string> m_arguments;
    int m_threads = 0;
};

// Never destroyed: a thread may outlast the statics of a process that ends.
Registry& Players()
{
    static auto* const registry = new Registry;
    return *registry;
}

std::vector<std::string> ArgumentsFor(const std::filesystem::path& path,
                                      std::initializer_list<const char*> own)
{
    std::vector<std::string> arguments = CommonArguments();
    arguments.insert(arguments.end(), own.begin(), own.end());
    const std::vector<std::string> added = Players().Arguments();
    arguments.insert(arguments.end(), added.begin(), added.end());
    arguments.emplace_back("--");
    arguments.push_back(path.string());
    return arguments;
}

// From a thread that gives up the network before it starts the player, which then never had it: whatever it opens in spite of its
// arguments, it tells nobody. Where the system has no such filter there is no player.
ResultCode StartPlayer(LaunchedProgram& player,
                       const char* name,
                       const std::vector<std::string>& arguments,
                       bool keepsOutput)
{
    const auto start = [&] {
        const ResultCode refused = RefuseNetwork();
        return refused != ResultSuccess
                   ? refused
                   : player.Start(PlayerFolder() / name, arguments, keepsOutput);
    };
    try {
        return std::async(std::launch::async, start).get();
    } catch (const std::exception&) {
        return ResultOutOfMemory;  // or no more threads
    }
}

void PlayerThread(const std::filesystem::path& path, const std::function<void()>& onFailed)
{
    LaunchedProgram player;
    const std::vector<std::string> arguments =
        ArgumentsFor(path, {"--geometry=326x189+845+260", "--video-aspect-override=16:9",
                            "--term-status-msg=P ${percent-pos}%"});
    if (StartPlayer(player, VideoPlayer, arguments, true) != ResultSuccess) {
        return;
    }
    const PlayerStart start = PlayerPipe().Watch(player);
    Players().Keep(std::move(player));
    if (start == PlayerStart::Failed) {
        onFailed();
    }
}

}  // namespace

std::filesystem::path PlayerFolder()
{
    return InstalledPath(PlayersBelowPrefix);
}

void AddPlayerArguments(std::vector<std::string> arguments)
{
    Players().AddArguments(std::move(arguments));
}

void StartVideo(const std::filesystem::path& path, std::function<void()> onFailed)
{
    Players().ThreadBegins();
    std::thread([path, onFailed = std::move(onFailed)] {
        try {
            PlayerThread(path, onFailed);
        } catch (...) {
            // Out of memory: there is no preview then.
        }
        Players().ThreadEnds();
    }).detach();
}

void StartAudio(const std::filesystem::path& path)
{
    LaunchedProgram player;
    const std::vector<std::string> arguments = ArgumentsFor(
        path, {"--force-window=immediate", "--audio-display=no", "--geometry=326x189+845+260"});
    if (StartPlayer(player, AudioPlayer, arguments, false) == ResultSuccess) {
        Players().Keep(std::move(player));
    }
}

void KillPlayers()
{
    (void)KillProcessByName(VideoPlayer);  // as far as the system lets
    (void)KillProcessByName(AudioPlayer);
    constexpr int EndMilliseconds = 100;
    Players().Reap(EndMilliseconds);
}

void WaitForPlayerThreads()
{
    Players().WaitForThreads();
}
