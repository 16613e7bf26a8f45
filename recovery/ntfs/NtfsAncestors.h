// The folders above found files: how deep each lies, and in which order they were first needed. Each folder's record is
// read once, however many files lie in it.
#pragma once

#include "recovery/FolderChain.h"
#include "recovery/ntfs/NtfsFileNames.h"
#include "recovery/ntfs/NtfsReaders.h"

#include <cstdint>
#include <vector>

class NtfsAncestors
{
public:
    explicit NtfsAncestors(NtfsReaders& ntfsReaders);

    // Folders from this one up to the root, which is not counted, or up to where the chain breaks: at a record that is
    // none, is no folder, or has no name. A chain that comes back to itself counts each of its folders once. New
    // folders are entered in FolderList.
    std::uint32_t Resolve(std::uint32_t recordNumber);
    void Clear();

    // Record numbers in order of first use, none twice.
    std::vector<std::uint32_t> FolderList;

private:
    // Where a folder's own record says that it lies.
    struct Parent
    {
        bool known = false;
        std::uint32_t number = 0;
    };

    Parent ReadParent(std::uint32_t recordNumber);

    NtfsReaders& m_readers;
    // A folder's depth depends on the volume alone, also inside a ring of folders and on the way to it.
    KnownDepths m_depths;
};
