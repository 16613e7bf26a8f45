// A source that breaks on purpose.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

// While it lives, every source opened is read through a fake that fails in the ranges given, as a bad sector
// does: what lies before the range still arrives. Ranges may be added after the source was opened.
class FailingReader
{
public:
    FailingReader();
    FailingReader(const FailingReader&) = delete;
    FailingReader& operator=(const FailingReader&) = delete;
    ~FailingReader();

    void FailBytes(std::uint64_t begin, std::uint64_t end);
    void FailSector(std::uint64_t lba, std::uint32_t sectorSize = 512);
    void FailFrom(std::uint64_t begin) { FailBytes(begin, UINT64_MAX); }
    void Heal();
    // Calls the action once, before the n-th read that begins at the position.
    void OnReadAt(std::uint64_t position, int nth, std::function<void()> action);
    // Reads that the fakes were asked for so far, whether they failed or not; and their largest.
    std::size_t ReadCount() const;
    std::size_t LargestRead() const;
    std::uint64_t BytesRead() const;

    // Under the lock: a thread that reads ahead asks too.
    struct State
    {
        std::mutex lock;
        std::vector<std::pair<std::uint64_t, std::uint64_t>> bad;
        std::uint64_t watched = 0;
        int readsToGo = 0;
        std::function<void()> action;
        std::size_t reads = 0;
        std::size_t largest = 0;
        std::uint64_t bytes = 0;
    };

private:
    std::shared_ptr<State> m_state;
};
