#include "storage/WaitingReader.h"

#include "platform/FileTime.h"

#include <chrono>

namespace {

constexpr std::chrono::milliseconds Interval(500);

}  // namespace

WaitingReader::WaitingReader(IByteReader& reader) : m_reader(reader), m_thread([this] { Run(); }) {}

WaitingReader::~WaitingReader()
{
    {
        const std::lock_guard guard(m_lock);
        m_ends = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void WaitingReader::Run()
{
    std::unique_lock lock(m_lock);
    while (true) {
        m_changed.wait(lock, [this] { return m_asked || m_ends; });
        if (!m_asked) {
            return;
        }
        lock.unlock();
        std::size_t got = 0;
        const ResultCode result =
            m_exactly ? m_reader.ReadExactly(m_position, m_buffer.data(), m_buffer.size(), &got)
                      : m_reader.ReadAt(m_position, m_buffer.data(), m_buffer.size(), &got);
        lock.lock();
        m_result = result;
        m_got = got;
        m_asked = false;
        m_changed.notify_all();
    }
}

ResultCode WaitingReader::Read(std::uint64_t position,
                               std::size_t count,
                               bool exactly,
                               const Waiting& waiting,
                               std::size_t* outRead)
{
    std::unique_lock lock(m_lock);
    m_buffer.resize(count);
    m_position = position;
    m_exactly = exactly;
    m_asked = true;
    m_changed.notify_all();
    const std::uint64_t start = TickMilliseconds();
    while (!m_changed.wait_for(lock, Interval, [this] { return !m_asked; })) {
        lock.unlock();
        waiting(TickMilliseconds() - start);
        lock.lock();
    }
    *outRead = m_got;
    return m_result;
}
