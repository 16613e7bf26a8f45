// A language file or config.ini, which users edit: the first byte chooses the limits, the rest is the file.
#include "texts/IniReader.h"

#include "platform/Text.h"
#include "texts/TextFormat.h"

#include <cstdint>
#include <cstdlib>

namespace {

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

std::size_t Units(const std::vector<std::string>& entries, std::size_t each)
{
    std::size_t units = 0;
    for (const std::string& entry : entries) {
        const std::u16string wide = Utf8ToUtf16(entry);
        Require(Utf16ToUtf8(wide) == entry && wide.size() <= each);
        units += wide.size() + 1;
    }
    return units;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string text(data + 1, data + size);
    const IniLimits limits = {std::size_t{data[0]} * 8, data[0] / 4u};
    const IniReader reader(text);
    const std::vector<std::string> names = reader.SectionNames(limits);
    Require(Units(names, limits.each) <= limits.all);
    for (const std::string& name : names) {
        const std::vector<std::string> lines = reader.Lines(name, limits);
        Require(Units(lines, limits.each) <= limits.all);
        for (const std::string& line : lines) {
            (void)FormatText(line, name, 1, u'x');
        }
    }
    // What is set is read back, and setting it again changes nothing.
    const std::string once = WithIniValue(text, "DefaultLanguage", "Default", "German");
    if (once.size() <= IniReader::MaxFileBytes) {
        Require(IniReader(once).Value("DefaultLanguage", "Default") == "German");
        Require(WithIniValue(once, "DefaultLanguage", "Default", "German") == once);
    }
    return 0;
}
