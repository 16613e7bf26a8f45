#include "app/wizard/TypePage.h"

#include "ui/windows/WindowImplBase.h"

namespace {

struct BlockNames
{
    const char* block;
    const char* all;
};

// In the order of the categories.
constexpr std::array<BlockNames, TypeCategoryCount> Blocks = {{{"FileTypePhoto", "OptPhotoFile"},
                                                               {"FileTypeAudio", "OptAudioFile"},
                                                               {"FileTypeVideo", "OptVideoFile"}}};

}  // namespace

TypePage::TypePage(const WindowImplBase& window)
{
    ReadBlock(window, TypeCategory::Photo);
    ReadBlock(window, TypeCategory::Audio);
    ReadBlock(window, TypeCategory::Video);
}

// The first child of a block is its head, all others are rows of options.
void TypePage::ReadBlock(const WindowImplBase& window, TypeCategory category)
{
    const auto index = static_cast<std::size_t>(category);
    Block& block = m_blocks.at(index);
    block.all = window.FindControlAs<COptionUI>(QLatin1String(Blocks.at(index).all));
    const CControlUI* control = window.FindControl(QLatin1String(Blocks.at(index).block));
    for (int row = 1; control != nullptr && row < control->GetCount(); ++row) {
        const CControlUI& line = *control->GetItemAt(row);
        for (int i = 0; i < line.GetCount(); ++i) {
            auto* option = dynamic_cast<COptionUI*>(line.GetItemAt(i));
            if (option == nullptr) {
                continue;
            }
            block.options.push_back(option);
            m_options[option] = std::make_unique<TypeOption>(TypeOption{
                category, option->GetText().toStdString(), option->GetUserData().toStdString(),
                option->GetAttribute(QStringLiteral("bkimage")).toStdString()});
        }
    }
}

void TypePage::Collect()
{
    m_filter.clear();
    for (const Block& block : m_blocks) {
        for (const COptionUI* option : block.options) {
            if (option->IsSelected()) {
                AddOption(m_filter, *m_options.at(option));
            }
        }
    }
}

void TypePage::OnSelectChanged(COptionUI& option)
{
    for (const Block& block : m_blocks) {
        if (block.all == &option) {
            // Each that changes comes back here by itself.
            for (COptionUI* member : block.options) {
                member->Selected(option.IsSelected());
            }
            return;
        }
    }
    const auto found = m_options.find(&option);
    if (found == m_options.end()) {
        return;
    }
    if (option.IsSelected()) {
        AddOption(m_filter, *found->second);
    } else {
        RemoveOption(m_filter, *found->second);
    }
}

void TypePage::ToggleBlock(TypeCategory category)
{
    if (COptionUI* all = m_blocks.at(static_cast<std::size_t>(category)).all) {
        all->Selected(!all->IsSelected());
    }
}
