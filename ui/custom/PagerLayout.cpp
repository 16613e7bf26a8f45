#include "ui/custom/PagerLayout.h"

namespace {

void AppendRun(std::vector<int>& pages, int first, int last)
{
    for (int page = first; page <= last; ++page) {
        pages.push_back(page);
    }
}

}  // namespace

PagerLayout LayOutPager(int pageCount, int currentPage, const PagerCounts& counts)
{
    PagerLayout layout;
    if (counts.buttons >= pageCount) {
        AppendRun(layout.pages, 1, pageCount);
        return layout;
    }
    const int half = (counts.buttons - 1) / 2;
    const bool isNearStart = currentPage <= half + 1;
    const bool isNearEnd = !isNearStart && currentPage >= pageCount - half;
    layout.hasLeftDots = !isNearStart;
    layout.hasRightDots = !isNearEnd;
    AppendRun(layout.pages, 1, counts.left + (isNearStart ? counts.Middle() : 0));
    if (!isNearStart && !isNearEnd) {
        const int aside = (counts.Middle() - 1) / 2;
        AppendRun(layout.pages, currentPage - aside, currentPage + aside);
    }
    AppendRun(layout.pages, pageCount - counts.right - (isNearEnd ? counts.Middle() : 0) + 1,
              pageCount);
    return layout;
}
