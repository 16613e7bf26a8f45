// The skin's archive: every member is read, and what comes out is bounded.
#include "ui/package/ZipArchive.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto archive = ZipArchive::Open(ByteView(data, size));
    if (!archive) {
        return 0;
    }
    int left = 16;
    for (const std::string& name : archive->Names()) {
        const auto content = archive->Read(name);
        if (content && content->size() > ZipArchive::MaxMemberBytes) {
            std::abort();
        }
        if (--left == 0) {
            break;
        }
    }
    return 0;
}
