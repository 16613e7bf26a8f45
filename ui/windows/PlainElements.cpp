#include "ui/controls/ButtonUI.h"
#include "ui/controls/ComboUI.h"
#include "ui/controls/ContainerUI.h"
#include "ui/controls/EditUI.h"
#include "ui/controls/LabelUI.h"
#include "ui/controls/RichEditUI.h"
#include "ui/controls/StripUI.h"
#include "ui/list/GridUI.h"
#include "ui/list/ListUI.h"
#include "ui/list/TreeNodeUI.h"
#include "ui/windows/MarkupBuilder.h"

#include <array>

namespace {

// Of those that a list or tree draws.
template <typename Control>
std::unique_ptr<CControlUI> MakeDrawn(const std::shared_ptr<Skin>&)
{
    return std::make_unique<Control>();
}

template <typename Control>
std::unique_ptr<CControlUI> Make(const std::shared_ptr<Skin>& skin)
{
    return std::make_unique<Control>(skin);
}

struct PlainElement
{
    const char* name;
    std::unique_ptr<CControlUI> (*make)(const std::shared_ptr<Skin>& skin);
};

constexpr std::array<PlainElement, 18> Elements = {{
    {"HorizontalLayout", Make<CHorizontalLayoutUI>},
    {"VerticalLayout", Make<CVerticalLayoutUI>},
    {"TabLayout", Make<CTabLayoutUI>},
    {"Control", Make<CPlainControlUI>},
    {"Label", Make<CLabelUI>},
    {"Text", Make<CTextUI>},
    {"Button", Make<CButtonUI>},
    {"Option", Make<COptionUI>},
    {"Edit", Make<CEditUI>},
    {"Combo", Make<CComboUI>},
    {"Progress", Make<CProgressUI>},
    {"RichEdit", Make<CRichEditUI>},
    {"Strip", Make<CStripUI>},
    {"List", Make<CListUI>},
    {"Grid", Make<CGridUI>},
    {"ListHeader", Make<CListHeaderUI>},
    {"ListHeaderItem", MakeDrawn<CListHeaderItemUI>},
    {"TreeNode", MakeDrawn<CTreeNodeUI>},
}};

}  // namespace

std::unique_ptr<CControlUI> MakePlainControl(const QString& element,
                                             const std::shared_ptr<Skin>& skin)
{
    for (const PlainElement& plain : Elements) {
        if (element == QLatin1String(plain.name)) {
            return plain.make(skin);
        }
    }
    return nullptr;
}
