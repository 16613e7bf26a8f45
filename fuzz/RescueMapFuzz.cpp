// A map file of a rescue, which lies on the user's disk between two runs and may come from another program.
#include "storage/RescueMap.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::optional<RescueMap> map = RescueMap::Parse(std::string(data, data + size));
    if (!map) {
        return 0;
    }
    const auto again = RescueMap::Parse(map->Text());
    if (!again || again->Text() != map->Text()) {
        std::abort();  // what was written is read back as it was
    }
    map->AlignTo(512);
    map->GrowTo(map->TotalBytes() + 512);
    (void)map->Strip(40);
    std::uint64_t bytes = 0;
    for (const char status : {'?', '*', '/', '-', '+'}) {
        bytes += map->BytesOf(static_cast<RescueStatus>(status));
        (void)map->FindForward(static_cast<RescueStatus>(status), map->position);
        (void)map->FindBackward(static_cast<RescueStatus>(status), map->position);
    }
    if (bytes != map->TotalBytes()) {
        std::abort();
    }
    return 0;
}
