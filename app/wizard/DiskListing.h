// Lists the disks on a thread of its own: whole tables are read for it, which takes long on a large or a failing disk.
#pragma once

#include "session/Session.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <thread>

// User-interface thread. The session outlives it.
class DiskListing : public QObject
{
public:
    // Called on the user-interface thread with what was listed.
    using Done = std::function<void(const TargetList& list)>;

    DiskListing(Session& session, Done done) : m_session(session), m_done(std::move(done)) {}
    DiskListing(const DiskListing&) = delete;
    DiskListing& operator=(const DiskListing&) = delete;
    // Stops what runs, and waits for it.
    ~DiskListing() override;

    // Does nothing while one runs.
    void Start();
    bool IsRunning() const { return m_isRunning; }

protected:
    // What the thread tells when it is done.
    bool event(QEvent* event) override;

private:
    void Join();

    Session& m_session;
    Done m_done;
    bool m_isRunning = false;
    TargetList m_list;  // the thread's own while it runs
    std::atomic<bool> m_stops = false;
    std::thread m_thread;
};
