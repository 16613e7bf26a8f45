// Which number buttons a pager shows.
#pragma once

#include <vector>

struct PagerCounts
{
    int buttons = 11;  // in all
    int left = 2;      // fixed ones
    int right = 2;

    int Middle() const { return buttons - left - right; }
};

struct PagerLayout
{
    // In order; at most as many as there are buttons, and as many when there are dots. Those stand after the left ones and
    // before the right ones.
    std::vector<int> pages;
    bool hasLeftDots = false;
    bool hasRightDots = false;

    bool operator==(const PagerLayout&) const = default;
};

PagerLayout LayOutPager(int pageCount, int currentPage, const PagerCounts& counts);
