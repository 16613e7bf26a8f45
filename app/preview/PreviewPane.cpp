#include "app/preview/PreviewPane.h"

#include "ui/controls/RichEditUI.h"

bool InsertPicture(
    CRichEditUI* pane, const std::filesystem::path&, const QString& fallback, int, int)
{
    if (pane == nullptr) {
        return false;
    }
    ShowText(*pane, fallback, FallbackSpacing);
    return true;
}

void ShowText(CRichEditUI& pane, const QString& text, int)
{
    pane.ShowText(text);
}

void ShowDump(CRichEditUI& pane, std::span<const std::uint8_t>)
{
    pane.Clear();
}
