// The page of file types: an option a type, in three blocks, and the filter that follows from those that are ticked.
#pragma once

#include "results/TypeFilterMap.h"
#include "ui/controls/ButtonUI.h"

#include <array>
#include <map>
#include <memory>
#include <vector>

class WindowImplBase;

class TypePage
{
public:
    // The window's controls are there.
    explicit TypePage(const WindowImplBase& window);

    // Takes what is ticked now.
    void Collect();
    // Of an option that is none of the page nothing comes.
    void OnSelectChanged(COptionUI& option);
    // As a click on the option of the whole block.
    void ToggleBlock(TypeCategory category);
    // Asking it for an extension leaves that in it; see LookUpOption().
    TypeFilterMap& Filter() { return m_filter; }

private:
    struct Block
    {
        COptionUI* all = nullptr;
        std::vector<COptionUI*> options;  // row by row
    };

    void ReadBlock(const WindowImplBase& window, TypeCategory category);

    std::array<Block, TypeCategoryCount> m_blocks;
    std::map<const COptionUI*, std::unique_ptr<TypeOption>> m_options;
    TypeFilterMap m_filter;
};
