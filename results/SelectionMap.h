// The found files that are ticked, kept apart from the list that shows them: a tick outlives a change of what is shown.
#pragma once

#include "recovery/FoundRow.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

// Bits 48 to 63: the letter of the target; 32 to 47: the engine's kind; 0 to 31: the record's place in its store, which no two
// records of a target share.
using SelectionKey = std::uint64_t;

SelectionKey KeyOf(const FoundRow& row);

// A copy of a row in a third of its memory: most of a record is room after its name.
class KeptRow
{
public:
    explicit KeptRow(const FoundRow& row);
    FoundRow Row() const;
    std::uint64_t FileSize() const { return m_fileSize; }

private:
    std::string m_record;  // its bytes up to the last one that is not 0
    std::uint64_t m_fileSize;
    StorePlace m_at;
    std::optional<StorePlace> m_doubleOf;
};

// In the order of the keys, which is the order that files are restored in.
using SelectionMap = std::map<SelectionKey, KeptRow>;

// The only way in and out. What is in already, or not there, stays as it is.
void SetSelected(SelectionMap& selection, const FoundRow& row, bool selected);

// Of all that is ticked; no more than fits, whatever the records claim.
std::uint64_t SelectedBytes(const SelectionMap& selection);
