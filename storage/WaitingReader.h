// Reads that may hang: a failing disk can hold one for minutes, and whoever waits for it is to hear of that.
#pragma once

#include "storage/ByteReader.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

// The reads run on a thread of its own, one at a time; all else stays with the caller. Nothing ends a read that hangs but
// its device: the destructor is never reached while one does.
class WaitingReader
{
public:
    // Called about twice a second while a read runs, with the milliseconds that it has taken so far.
    using Waiting = std::function<void(std::uint64_t milliseconds)>;

    explicit WaitingReader(IByteReader& reader);
    WaitingReader(const WaitingReader&) = delete;
    WaitingReader& operator=(const WaitingReader&) = delete;
    ~WaitingReader();

    // As IByteReader::ReadAt or ReadExactly, into Data().
    [[nodiscard]] ResultCode Read(std::uint64_t position,
                                  std::size_t count,
                                  bool exactly,
                                  const Waiting& waiting,
                                  std::size_t* outRead);
    const std::uint8_t* Data() const { return m_buffer.data(); }

private:
    void Run();

    IByteReader& m_reader;
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_asked = false;
    bool m_ends = false;
    bool m_exactly = false;
    std::uint64_t m_position = 0;
    std::size_t m_got = 0;
    ResultCode m_result = ResultSuccess;
    std::vector<std::uint8_t> m_buffer;
    std::thread m_thread;  // last: it uses all of them
};
