#include "storage/ScanMarks.h"

#include <algorithm>

ScanMarks::ScanMarks(std::uint64_t startByte, std::uint64_t byteCount)
    : m_start(startByte), m_end(startByte + std::min(byteCount, UINT64_MAX - startByte))
{
    const std::uint64_t bytes = m_end - m_start;
    const std::uint64_t last = bytes - (bytes != 0 ? 1 : 0);
    while (last >> m_shift >= Parts) {
        ++m_shift;
    }
    m_parts = static_cast<std::size_t>(last >> m_shift) + 1;
}

// NOLINTNEXTLINE(readability-make-member-function-const): the bits are its own
void ScanMarks::Note(Bits& bits, std::uint64_t position, std::uint64_t count)
{
    if (position < m_start || position >= m_end || count == 0) {
        return;
    }
    const std::uint64_t last = position + (std::min(count, m_end - position) - 1);
    const auto lastPart = static_cast<std::size_t>((last - m_start) >> m_shift);
    for (auto part = static_cast<std::size_t>((position - m_start) >> m_shift); part <= lastPart;
         ++part) {
        if (!Has(bits, part)) {
            bits[part / 64].fetch_or(std::uint64_t{1} << part % 64, std::memory_order_relaxed);
        }
    }
}

char ScanMarks::LetterOf(std::size_t first, std::size_t behind) const
{
    constexpr std::size_t Steps = 9;
    std::size_t read = 0;
    bool isUnread = false;
    bool isFound = false;
    for (std::size_t part = first; part < behind; ++part) {
        read += Has(m_read, part) ? 1U : 0U;
        isUnread = isUnread || Has(m_unread, part);
        isFound = isFound || Has(m_found, part);
    }
    if (isUnread) {
        return isFound ? '!' : '-';
    }
    if (isFound) {
        return 'F';
    }
    const std::size_t step = read * Steps / (behind - first);
    if (step == Steps) {
        return '+';
    }
    return read == 0 ? '?' : static_cast<char>('0' + std::max<std::size_t>(step, 1));
}

std::string ScanMarks::Letters(std::size_t cells) const
{
    std::string letters;
    for (std::size_t cell = 0; cell < cells; ++cell) {
        const std::size_t first = m_parts * cell / cells;
        const std::size_t behind = std::max(m_parts * (cell + 1) / cells, first + 1);
        letters += LetterOf(first, behind);
    }
    return letters;
}
