// Results without the rows that show a file a second time. Nothing is lost by it: a double is left out only where the row that
// shows its file can be seen, and gives that one its tick.
#pragma once

#include "results/ExtensionGroups.h"
#include "results/SelectionMap.h"
#include "results/TypeFilterMap.h"

#include <vector>

struct DoubleRow
{
    const FoundRow* row = nullptr;
    const FoundRow* shown = nullptr;  // the one that shows the same file, and knows more of it
};

// The doubles in the tree of types; in the order of the groups.
std::vector<DoubleRow> DoublesIn(const ExtensionGroups& groups, const TypeFilterMap& filter);
void LeaveOut(ExtensionGroups& groups, const std::vector<DoubleRow>& doubles);
// A tick on a double goes to the row that shows its file, so that the file is restored, and once. What is ticked together with
// a double of it on other targets stays too, without the double.
void MoveTicks(SelectionMap& selection, const std::vector<DoubleRow>& doubles);
