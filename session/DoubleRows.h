// Rows of a search that show a file a second time.
#pragma once

#include "recovery/DataPlaces.h"
#include "recovery/FoundRow.h"

#include <functional>
#include <span>

// Sets doubleOf of each row that another one shows too, found by an engine that knows more of it: with the same name and size,
// or known by its content alone, of the same kind and not shorter. A row is marked only when its bytes come from the same
// places of the source. goesOn is asked between two rows; when it says no, the rest stays without marks.
void MarkDoubles(std::span<FoundRow> rows,
                 ITellsDataPlaces& engine,
                 const std::function<bool()>& goesOn);
