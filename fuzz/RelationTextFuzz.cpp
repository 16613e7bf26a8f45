// The text of a _Relation file, which lies on the user's disk between two runs.
#include "recovery/RelationText.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(data, data + size);
    auto relation = ParseRelationText(input);
    std::string text;
    for (auto& [key, numbers] : relation) {
        if (numbers.empty()) {
            numbers.push_back(0);  // how an empty list comes back
        }
        AppendRelationEntry(key, numbers, text);
    }
    // What was written is read back as it was.
    if (ParseRelationText(text) != relation) {
        std::abort();
    }
    return 0;
}
