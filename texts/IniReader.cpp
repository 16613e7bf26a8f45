#include "texts/IniReader.h"

#include "platform/FileHandle.h"
#include "platform/Text.h"

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view LineEnds = "\r\n";
constexpr std::string_view Blanks = " \t\v\f";

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

std::string_view WithoutMark(std::string_view text)
{
    return text.starts_with(ByteOrderMark) ? text.substr(ByteOrderMark.size()) : text;
}

// The line at the beginning of text, without its end; text then begins after that end.
std::string_view TakeLine(std::string_view& text)
{
    const std::size_t end = text.find_first_of(LineEnds);
    const std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return line;
}

// The name of a section's head. A missing bracket at its end does no harm: the keys that follow must
// not land in the section before.
std::optional<std::string_view> SectionHead(std::string_view line)
{
    line = Trimmed(line);
    if (!line.starts_with('[')) {
        return std::nullopt;
    }
    return Trimmed(line.substr(1, line.find(']') - 1));
}

// Nothing for what is no "key=value".
std::optional<IniPair> KeyAndValue(std::string_view line)
{
    line = Trimmed(line);
    if (line.starts_with(';') || line.find('=') == std::string_view::npos) {
        return std::nullopt;
    }
    const IniPair pair = SplitIniLine(line);
    const std::string_view key = Trimmed(pair.key);
    if (key.empty()) {
        return std::nullopt;
    }
    return IniPair{key, Trimmed(pair.value)};
}

// Valid UTF-8 without NUL, which would end a text where others look at it.
std::string Sanitized(std::string_view text)
{
    std::u16string units = Utf8ToUtf16(text);
    for (char16_t& unit : units) {
        if (unit == 0) {
            unit = 0xFFFD;
        }
    }
    return Utf16ToUtf8(units);
}

std::size_t UnitsOf(char leadByte)
{
    const auto byte = static_cast<unsigned char>(leadByte);
    if ((byte & 0xC0) == 0x80) {
        return 0;  // counted with the byte that it follows
    }
    return byte >= 0xF0 ? 2 : 1;
}

std::size_t UnitCount(std::string_view text)
{
    std::size_t units = 0;
    for (const char byte : text) {
        units += UnitsOf(byte);
    }
    return units;
}

std::vector<std::string> Limited(const std::vector<std::string>& entries, const IniLimits& limits)
{
    std::vector<std::string> kept;
    std::size_t left = limits.all;
    for (const std::string& entry : entries) {
        if (left <= 1) {
            break;
        }
        const std::string_view fits = CutToUnits(entry, left - 1);
        kept.emplace_back(CutToUnits(fits, limits.each));
        left -= UnitCount(fits) + 1;
        if (fits.size() < entry.size()) {
            break;
        }
    }
    return kept;
}

std::string_view WithoutQuotes(std::string_view value)
{
    const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
                        value.back() == value.front();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

// One byte more than is used, which tells a file that is too large.
std::optional<std::string> ReadBeginning(const std::filesystem::path& path)
{
    std::error_code ignored;
    FileHandle file;
    // Looked at first: opening a pipe would wait for its other end.
    if (!std::filesystem::is_regular_file(path, ignored) ||
        file.OpenForReading(path) != ResultSuccess) {
        return std::nullopt;
    }
    std::string text(IniReader::MaxFileBytes + 1, '\0');
    std::size_t read = 0;
    if (file.ReadAt(0, text.data(), text.size(), &read) != ResultSuccess) {
        return std::nullopt;
    }
    text.resize(read);
    return text;
}

}  // namespace

IniReader::IniReader(std::string_view text)
{
    const std::string clean = Sanitized(WithoutMark(text.substr(0, MaxFileBytes)));
    std::string_view rest = clean;
    std::vector<std::string>* lines = nullptr;
    while (!rest.empty()) {
        const std::string_view line = TakeLine(rest);
        if (const auto name = SectionHead(line)) {
            m_names.emplace_back(*name);
            lines = &m_lines[LowerAscii(*name)];
            continue;
        }
        const auto pair = KeyAndValue(line);
        if (pair && lines != nullptr) {
            lines->push_back(std::string(pair->key) + "=" + std::string(pair->value));
        }
    }
}

IniReader IniReader::FromFile(const std::filesystem::path& path)
{
    return IniReader(ReadBeginning(path).value_or(std::string()));
}

std::vector<std::string> IniReader::SectionNames(const IniLimits& limits) const
{
    return Limited(m_names, limits);
}

std::vector<std::string> IniReader::Lines(std::string_view section, const IniLimits& limits) const
{
    const auto found = m_lines.find(LowerAscii(section));
    return found == m_lines.end() ? std::vector<std::string>() : Limited(found->second, limits);
}

std::optional<std::string> IniReader::Value(std::string_view section, std::string_view key) const
{
    const auto found = m_lines.find(LowerAscii(section));
    if (found == m_lines.end()) {
        return std::nullopt;
    }
    for (const std::string& line : found->second) {
        const IniPair pair = SplitIniLine(line);
        if (EqualIgnoringAsciiCase(pair.key, key)) {
            return std::string(WithoutQuotes(pair.value));
        }
    }
    return std::nullopt;
}

std::optional<std::string> ReadIniText(const std::filesystem::path& path)
{
    std::optional<std::string> text = ReadBeginning(path);
    return text && text->size() <= IniReader::MaxFileBytes ? text : std::nullopt;
}

std::string WithIniValue(std::string_view text,
                         std::string_view section,
                         std::string_view key,
                         std::string_view value)
{
    const std::string end = text.find("\r\n") == std::string_view::npos ? "\n" : "\r\n";
    const std::string line = std::string(key) + "=" + std::string(value);
    const auto replaced = [text](const char* from, std::size_t length, const std::string& with) {
        return std::string(text).replace(static_cast<std::size_t>(from - text.data()), length,
                                         with);
    };
    std::string_view rest = WithoutMark(text);
    std::optional<std::string_view> head;
    bool inside = false;
    while (!rest.empty()) {
        const std::string_view at = TakeLine(rest);
        if (const auto name = SectionHead(at)) {
            inside = EqualIgnoringAsciiCase(*name, section);
            head = inside && !head ? at : head;
            continue;
        }
        const auto pair = KeyAndValue(at);
        if (inside && pair && EqualIgnoringAsciiCase(pair->key, key)) {
            return replaced(at.data(), at.size(), line);
        }
    }
    if (head) {
        return replaced(head->data() + head->size(), 0, end + line);
    }
    std::string grown(text);
    if (!grown.empty() && LineEnds.find(grown.back()) == std::string_view::npos) {
        grown += end;
    }
    return grown + "[" + std::string(section) + "]" + end + line + end;
}

IniPair SplitIniLine(std::string_view line)
{
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return {line, {}};
    }
    return {line.substr(0, equals), line.substr(equals + 1)};
}

std::string_view CutToUnits(std::string_view text, std::size_t maxUnits)
{
    std::size_t units = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        units += UnitsOf(text[i]);
        if (units > maxUnits) {
            return text.substr(0, i);
        }
    }
    return text;
}
