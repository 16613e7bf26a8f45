#include "ui/controls/SpanDivider.h"

#include <algorithm>
#include <cstddef>

namespace {

// The lengths of those that share. One that a bound holds gets the bound, and the others share anew.
std::vector<int> ShareRest(const std::vector<SpanPart>& parts, int rest)
{
    std::vector<int> lengths(parts.size(), -1);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].fixed >= 0) {
            lengths[i] = parts[i].fixed;
        }
    }
    bool isSettled = false;
    while (!isSettled) {
        isSettled = true;
        int shares = 0;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            shares += lengths[i] < 0 ? parts[i].share : 0;
        }
        if (shares == 0) {
            break;
        }
        for (std::size_t i = 0; i < parts.size() && isSettled; ++i) {
            const int share = std::max(rest, 0) * parts[i].share / shares;
            const int bounded =
                std::clamp(share, parts[i].minimum, std::max(parts[i].minimum, parts[i].maximum));
            if (lengths[i] < 0 && bounded != share) {
                lengths[i] = bounded;
                rest -= bounded;
                isSettled = false;
            }
        }
        for (std::size_t i = 0; i < parts.size() && isSettled; ++i) {
            if (lengths[i] < 0) {
                lengths[i] = std::max(rest, 0) * parts[i].share / shares;
                rest -= lengths[i];
                shares -= parts[i].share;
            }
        }
    }
    return lengths;
}

}  // namespace

std::vector<Span> DivideSpan(const std::vector<SpanPart>& parts, int start, int total, int gap)
{
    int rest = total - gap * std::max(static_cast<int>(parts.size()) - 1, 0);
    for (const SpanPart& part : parts) {
        rest -= part.before + part.behind + std::max(part.fixed, 0);
    }
    const std::vector<int> lengths = ShareRest(parts, rest);
    std::vector<Span> spans;
    spans.reserve(parts.size());
    int at = start;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        at += parts[i].before;
        spans.push_back({at, lengths[i]});
        at += lengths[i] + parts[i].behind + gap;
    }
    return spans;
}
