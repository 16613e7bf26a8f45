#include "recovery/DataPlaces.h"

#include <algorithm>

bool AddPlace(BytePlaces& places,
              std::uint64_t sector,
              std::uint64_t sectors,
              std::uint32_t sectorSize)
{
    if (sectorSize == 0 || sectors == 0 || sector > UINT64_MAX / 2 / sectorSize ||
        sectors > UINT64_MAX / 2 / sectorSize) {
        return false;
    }
    const BytePlace place = {sector * sectorSize, sectors * sectorSize};
    if (!places.empty() && places.back().position + places.back().length == place.position &&
        places.back().length <= UINT64_MAX / 2 - place.length) {
        places.back().length += place.length;
    } else {
        places.push_back(place);
    }
    return true;
}

bool BeginAlike(const BytePlaces& left, const BytePlaces& right, std::uint64_t bytes)
{
    auto one = left.begin();
    auto other = right.begin();
    std::uint64_t ofOne = 0;  // bytes of the place that are done with
    std::uint64_t ofOther = 0;
    while (bytes != 0) {
        if (one == left.end() || other == right.end() ||
            one->position + ofOne != other->position + ofOther) {
            return false;
        }
        const std::uint64_t step = std::min({bytes, one->length - ofOne, other->length - ofOther});
        bytes -= step;
        ofOne += step;
        ofOther += step;
        if (ofOne == one->length) {
            ++one;
            ofOne = 0;
        }
        if (ofOther == other->length) {
            ++other;
            ofOther = 0;
        }
    }
    return true;
}
