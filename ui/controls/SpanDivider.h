// How a layout divides its length among its children, one direction at a time.
#pragma once

#include <vector>

struct SpanPart
{
    int fixed = -1;  // its length; -1 shares what the others leave
    int minimum = 0;
    int maximum = 1 << 20;
    int before = 0;  // outer margins
    int behind = 0;
    int share = 1;  // of what is shared, against those of the others; above 0
};

struct Span
{
    int start = 0;
    int length = 0;

    bool operator==(const Span&) const = default;
};

// In order from start on. Those that share get parts by their shares within their bounds, the last ones the pixels that are left
// over. Nothing is made smaller than its minimum: what does not fit goes over the end.
std::vector<Span> DivideSpan(const std::vector<SpanPart>& parts, int start, int total, int gap);
