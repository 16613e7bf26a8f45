#include "app/preview/ThumbnailMaker.h"

#include "app/preview/PictureDecoding.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

namespace {

// Few pictures are larger; of one that is, its beginning has to do. They are held while they are decoded.
constexpr std::uint64_t MostBytes = 16 << 20;
// After which it is tried again whether the task is over.
constexpr std::chrono::milliseconds TaskPause{100};

}  // namespace

ThumbnailMaker::ThumbnailMaker(EngineTurns& turns, Made made)
    : m_turns(turns), m_made(std::move(made))
{
}

ThumbnailMaker::~ThumbnailMaker()
{
    {
        const std::lock_guard held(m_lock);
        m_isEnding = true;
        m_hasChanged.notify_all();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void ThumbnailMaker::Want(std::vector<Wish> wishes)
{
    const std::lock_guard held(m_lock);
    std::erase_if(wishes, [this](const Wish& wish) { return wish.key == m_atWork; });
    std::reverse(wishes.begin(), wishes.end());
    m_wishes = std::move(wishes);
    m_hasChanged.notify_all();
    if (m_thread.joinable() || m_wishes.empty()) {
        return;
    }
    try {
        m_thread = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
        m_wishes.clear();  // icons stand in their places
    }
}

std::optional<ThumbnailMaker::Wish> ThumbnailMaker::Next()
{
    std::unique_lock held(m_lock);
    m_atWork.reset();
    m_hasChanged.wait(held, [this] { return m_isEnding || !m_wishes.empty(); });
    if (m_isEnding) {
        return std::nullopt;
    }
    Wish wish = std::move(m_wishes.back());
    m_wishes.pop_back();
    m_atWork = wish.key;
    return wish;
}

void ThumbnailMaker::Run()
{
    while (const std::optional<Wish> wish = Next()) {
        bool isMade = false;
        try {
            isMade = Make(*wish);
        } catch (const std::exception&) {
            m_made(*wish, {});  // memory ran out
            continue;
        }
        if (!isMade) {
            std::unique_lock held(m_lock);
            m_wishes.push_back(*wish);
            m_atWork.reset();
            m_hasChanged.wait_for(held, TaskPause, [this] { return m_isEnding.load(); });
        }
    }
}

bool ThumbnailMaker::Make(const Wish& wish)
{
    PreviewOutcome read;
    const bool hasRun = m_turns.RunInBackground([&] {
        if (const std::shared_ptr<ScanSession> engine = wish.engine.lock()) {
            const std::uint64_t size = wish.record.FileSize;  // of a packed record
            const auto most = static_cast<std::uint32_t>(std::min(size, MostBytes));
            read = engine->ReadBytes(wish.record, most, [this](const Progress&) {
                return m_isEnding || m_turns.IsTaskWaiting() ? Answer::Stop : Answer::GoOn;
            });
        }
    });
    if (!hasRun || read.stopped) {
        return false;
    }
    m_made(wish, read.bytes.empty() ? QImage() : DecodeThumbnail(read.bytes));
    return true;
}
