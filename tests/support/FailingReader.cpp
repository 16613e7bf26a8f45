#include "tests/support/FailingReader.h"

#include "storage/ByteReader.h"

#include <algorithm>

namespace {

class Fake : public IByteReader
{
public:
    Fake(std::unique_ptr<IByteReader> inner, std::shared_ptr<FailingReader::State> state)
        : m_inner(std::move(inner)), m_state(std::move(state))
    {
    }

    ResultCode ReadAt(std::uint64_t position,
                      std::uint8_t* buffer,
                      std::size_t count,
                      std::size_t* outRead) override
    {
        std::function<void()> action;
        {
            const std::lock_guard guard(m_state->lock);
            ++m_state->reads;
            m_state->bytes += count;
            m_state->largest = std::max(m_state->largest, count);
            if (m_state->action && position == m_state->watched && --m_state->readsToGo == 0) {
                action = std::exchange(m_state->action, nullptr);
            }
        }
        if (action) {
            action();
        }
        const std::uint64_t good = GoodBytes(position, count);
        const ResultCode result = m_inner->ReadAt(position, buffer, good, outRead);
        return result == ResultSuccess && good < count ? ResultReadFault : result;
    }

private:
    // What lies before the first bad byte.
    std::uint64_t GoodBytes(std::uint64_t position, std::uint64_t count) const
    {
        const std::lock_guard guard(m_state->lock);
        std::uint64_t good = count;
        for (const auto& [begin, end] : m_state->bad) {
            if (position < end && position + count > begin) {
                good = std::min(good, begin > position ? begin - position : 0);
            }
        }
        return good;
    }

    std::unique_ptr<IByteReader> m_inner;
    std::shared_ptr<FailingReader::State> m_state;
};

}  // namespace

FailingReader::FailingReader() : m_state(std::make_shared<State>())
{
    SetReaderDecorator([state = m_state](std::unique_ptr<IByteReader> inner) {
        return std::make_unique<Fake>(std::move(inner), state);
    });
}

FailingReader::~FailingReader()
{
    SetReaderDecorator({});
}

void FailingReader::FailBytes(std::uint64_t begin, std::uint64_t end)
{
    const std::lock_guard guard(m_state->lock);
    m_state->bad.emplace_back(begin, end);
}

void FailingReader::FailSector(std::uint64_t lba, std::uint32_t sectorSize)
{
    FailBytes(lba * sectorSize, (lba + 1) * sectorSize);
}

void FailingReader::Heal()
{
    const std::lock_guard guard(m_state->lock);
    m_state->bad.clear();
}

void FailingReader::OnReadAt(std::uint64_t position, int nth, std::function<void()> action)
{
    const std::lock_guard guard(m_state->lock);
    m_state->readsToGo = nth;
    m_state->watched = position;
    m_state->action = std::move(action);
}

std::size_t FailingReader::ReadCount() const
{
    const std::lock_guard guard(m_state->lock);
    return m_state->reads;
}

std::size_t FailingReader::LargestRead() const
{
    const std::lock_guard guard(m_state->lock);
    return m_state->largest;
}

std::uint64_t FailingReader::BytesRead() const
{
    const std::lock_guard guard(m_state->lock);
    return m_state->bytes;
}
