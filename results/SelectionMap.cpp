#include "results/SelectionMap.h"

SelectionKey KeyOf(const FoundRow& row)
{
    const SelectionKey letter = row.record.DriveLetter;
    const SelectionKey kind = row.record.EngineKind & 0xFFFFU;
    return letter << 48U | kind << 32U | row.at.place;
}

void SetSelected(SelectionMap& selection, const FoundRow& row, bool selected)
{
    if (selected)
        selection.try_emplace(KeyOf(row), row);
    else
        selection.erase(KeyOf(row));
}
