// Makes small pictures of found files in the background: reads each out of its target while no task needs that, and has it
// decoded.
#pragma once

#include "app/tasks/EngineTurns.h"
#include "results/SelectionMap.h"
#include "session/ScanSession.h"

#include <QImage>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

class ThumbnailMaker
{
public:
    struct Wish
    {
        SelectionKey key = 0;
        FileRecord record;
        std::weak_ptr<ScanSession> engine;  // one that is gone gives no picture, and is not kept
        int results = 0;                    // of which search; for whoever wants it
    };
    // On the maker's thread. A null picture where there is none.
    using Made = std::function<void(const Wish& wish, const QImage& picture)>;

    ThumbnailMaker(EngineTurns& turns, Made made);
    ThumbnailMaker(const ThumbnailMaker&) = delete;
    ThumbnailMaker& operator=(const ThumbnailMaker&) = delete;
    // Waits for the picture that is being made.
    ~ThumbnailMaker();

    // In this order, and in place of what was wanted before. The first call starts the thread.
    void Want(std::vector<Wish> wishes);

private:
    void Run();
    std::optional<Wish> Next();
    // False when a task came between.
    bool Make(const Wish& wish);

    EngineTurns& m_turns;
    const Made m_made;
    std::mutex m_lock;
    std::condition_variable m_hasChanged;
    std::vector<Wish> m_wishes;  // the next one last
    std::optional<SelectionKey> m_atWork;
    std::atomic<bool> m_isEnding = false;
    std::thread m_thread;
};
