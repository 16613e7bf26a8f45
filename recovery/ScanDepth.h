// How thoroughly a target is searched.
#pragma once

enum class ScanDepth
{
    Quick,  // what the file system still knows
    Deep,   // that, then one pass over the sectors that the file system does not use
    Whole   // the same, and the pass goes over all sectors, whatever the file system says
};
