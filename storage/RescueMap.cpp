#include "storage/RescueMap.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <vector>

namespace {

constexpr std::string_view Blanks = " \t\r";
// Larger than any disk; keeps sums of two positions from wrapping around.
constexpr std::uint64_t MostBytes = std::uint64_t{1} << 62;
// From what is fine to what is lost.
constexpr std::array Severity = {RescueStatus::Finished, RescueStatus::NonTried,
                                 RescueStatus::NonTrimmed, RescueStatus::NonScraped,
                                 RescueStatus::Bad};

std::size_t SeverityOf(RescueStatus status)
{
    return static_cast<std::size_t>(std::find(Severity.begin(), Severity.end(), status) -
                                    Severity.begin());
}

std::vector<std::string_view> WordsOf(std::string_view line)
{
    std::vector<std::string_view> words;
    while (words.size() < 4) {
        const std::size_t begin = line.find_first_not_of(Blanks);
        if (begin == std::string_view::npos) {
            break;
        }
        const std::size_t end = std::min(line.find_first_of(Blanks, begin), line.size());
        words.push_back(line.substr(begin, end - begin));
        line.remove_prefix(end);
    }
    return words;
}

// Decimal, 0x and hexadecimal, 0 and octal.
std::optional<std::uint64_t> NumberOf(std::string_view word)
{
    int base = 10;
    if (word.starts_with("0x") || word.starts_with("0X")) {
        word.remove_prefix(2);
        base = 16;
    } else if (word.size() > 1 && word.front() == '0') {
        base = 8;
    }
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number, base);
    if (error != std::errc() || end != word.data() + word.size() || number > MostBytes) {
        return std::nullopt;
    }
    return number;
}

std::optional<RescueStatus> StatusOf(std::string_view word)
{
    for (const RescueStatus status : Severity) {
        if (word.size() == 1 && word.front() == static_cast<char>(status)) {
            return status;
        }
    }
    return std::nullopt;
}

// Position, letter and, from a certain version on, number of the pass. Filling and generating are none of ours.
bool ReadState(const std::vector<std::string_view>& words, RescueMap& map)
{
    if (words.size() < 2 || words.size() > 3 || words[1].size() != 1 ||
        std::string_view("?*/-+FG").find(words[1]) == std::string_view::npos) {
        return false;
    }
    const auto position = NumberOf(words[0]);
    const auto pass = words.size() == 3 ? NumberOf(words[2]) : std::optional<std::uint64_t>(1);
    if (!position || !pass) {
        return false;
    }
    map.position = *position;
    map.pass = static_cast<std::uint32_t>(std::min<std::uint64_t>(*pass, UINT32_MAX));
    map.phase = words[1] == "F" || words[1] == "G" ? RescuePhase::Copying
                                                   : static_cast<RescuePhase>(words[1].front());
    return true;
}

std::optional<RescueBlock> ReadBlock(const std::vector<std::string_view>& words)
{
    const auto begin = words.size() == 3 ? NumberOf(words[0]) : std::nullopt;
    const auto size = begin ? NumberOf(words[1]) : std::nullopt;
    const auto status = size ? StatusOf(words[2]) : std::nullopt;
    if (!status || *size == 0 || *size > MostBytes - *begin) {
        return std::nullopt;
    }
    return RescueBlock{*begin, *begin + *size, *status};
}

std::string Hex(std::uint64_t number)
{
    std::array<char, 16> digits = {};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    std::string text(digits.data(), end);
    std::transform(text.begin(), text.end(), text.begin(), [](char digit) {
        return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
    });
    return "0x" + std::string(text.size() < 8 ? 8 - text.size() : 0, '0') + text;
}

}  // namespace

RescueMap::RescueMap(std::uint64_t totalBytes)
{
    GrowTo(totalBytes);
}

std::optional<RescueMap> RescueMap::Parse(std::string_view text)
{
    RescueMap map;
    bool hasState = false;
    bool hasBlock = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::vector<std::string_view> words = WordsOf(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (words.empty() || words.front().starts_with('#')) {
            continue;
        }
        if (!hasState) {
            hasState = true;
            if (!ReadState(words, map)) {
                return std::nullopt;
            }
            continue;
        }
        const std::optional<RescueBlock> block = ReadBlock(words);
        if (!block || (hasBlock && block->begin != map.m_total)) {
            return std::nullopt;
        }
        hasBlock = true;
        map.GrowTo(block->end);
        map.Set(block->begin, block->end, block->status);
    }
    return hasBlock ? std::optional<RescueMap>(std::move(map)) : std::nullopt;
}

std::string RescueMap::Text() const
{
    std::string text = "# Mapfile. Created by Orvanta Lumivault\n"
                       "# Positions are those in the image.\n"
                       "# current_pos  current_status  current_pass\n";
    text += Hex(position) + "     " + static_cast<char>(phase) + "               " +
            std::to_string(pass) + "\n#      pos        size  status\n";
    for (auto block = m_starts.begin(); block != m_starts.end(); ++block) {
        text += Hex(block->first) + "  " + Hex(EndOf(block) - block->first) + "  " +
                static_cast<char>(block->second) + '\n';
    }
    return text;
}

void RescueMap::GrowTo(std::uint64_t totalBytes)
{
    if (totalBytes > m_total) {
        const std::uint64_t old = m_total;
        m_total = totalBytes;
        // Until it is set, the new part belongs to the last block.
        if (m_starts.empty()) {
            m_starts[0] = RescueStatus::NonTried;
            m_bytes[RescueStatus::NonTried] = totalBytes;
            return;
        }
        m_bytes[m_starts.rbegin()->second] += totalBytes - old;
        Set(old, totalBytes, RescueStatus::NonTried);
    }
}

void RescueMap::AlignTo(std::uint32_t sectorSize)
{
    position -= position % sectorSize;
    std::vector<RescueBlock> unread;
    for (auto block = m_starts.begin(); block != m_starts.end(); ++block) {
        if (block->second != RescueStatus::Finished) {
            unread.push_back({block->first, EndOf(block), block->second});
        }
    }
    for (const RescueBlock& block : unread) {
        const std::uint64_t before = block.begin % sectorSize;
        const std::uint64_t behind = block.end % sectorSize;
        Set(block.begin - before, block.begin, block.status);
        if (behind != 0) {
            Set(block.end, block.end - behind + sectorSize, block.status);
        }
    }
}

std::uint64_t RescueMap::EndOf(Starts::const_iterator block) const
{
    const auto next = std::next(block);
    return next != m_starts.end() ? next->first : m_total;
}

void RescueMap::SplitAt(std::uint64_t place)
{
    if (place < m_total) {
        m_starts.emplace(place, std::prev(m_starts.upper_bound(place))->second);
    }
}

void RescueMap::Set(std::uint64_t begin, std::uint64_t end, RescueStatus status)
{
    end = std::min(end, m_total);
    if (begin >= end) {
        return;
    }
    SplitAt(begin);
    SplitAt(end);
    auto block = m_starts.find(begin);
    while (block != m_starts.end() && block->first < end) {
        m_bytes[block->second] -= EndOf(block) - block->first;
        block = m_starts.erase(block);
    }
    m_bytes[status] += end - begin;
    block = m_starts.emplace(begin, status).first;
    const auto next = std::next(block);
    if (next != m_starts.end() && next->second == status) {
        m_starts.erase(next);
    }
    if (block != m_starts.begin() && std::prev(block)->second == status) {
        m_starts.erase(block);
    }
}

std::optional<RescueBlock> RescueMap::FindForward(RescueStatus status, std::uint64_t from) const
{
    if (from >= m_total) {
        return std::nullopt;
    }
    for (auto block = std::prev(m_starts.upper_bound(from)); block != m_starts.end(); ++block) {
        if (block->second == status) {
            return RescueBlock{std::max(block->first, from), EndOf(block), status};
        }
    }
    return std::nullopt;
}

std::optional<RescueBlock> RescueMap::FindBackward(RescueStatus status, std::uint64_t until) const
{
    for (auto block = m_starts.lower_bound(until); block != m_starts.begin();) {
        --block;
        if (block->second == status) {
            return RescueBlock{block->first, std::min(EndOf(block), until), status};
        }
    }
    return std::nullopt;
}

std::uint64_t RescueMap::BytesOf(RescueStatus status) const
{
    const auto found = m_bytes.find(status);
    return found != m_bytes.end() ? found->second : 0;
}

std::size_t RescueMap::BadPlaces() const
{
    return static_cast<std::size_t>(
        std::count_if(m_starts.begin(), m_starts.end(),
                      [](const auto& block) { return block.second == RescueStatus::Bad; }));
}

std::string RescueMap::Strip(std::size_t cells) const
{
    std::string strip(cells, static_cast<char>(RescueStatus::Finished));
    const std::uint64_t cellBytes = cells != 0 ? (m_total + cells - 1) / cells : 1;
    for (auto block = m_starts.begin(); cells != 0 && block != m_starts.end(); ++block) {
        const std::size_t last = static_cast<std::size_t>((EndOf(block) - 1) / cellBytes);
        for (auto cell = static_cast<std::size_t>(block->first / cellBytes); cell <= last; ++cell) {
            if (SeverityOf(block->second) > SeverityOf(static_cast<RescueStatus>(strip[cell]))) {
                strip[cell] = static_cast<char>(block->second);
            }
        }
    }
    return strip;
}
