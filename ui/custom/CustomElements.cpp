#include "ui/custom/CustomElements.h"

#include "ui/custom/ButtonExUI.h"
#include "ui/custom/DiskListUI.h"
#include "ui/custom/FileTreeUI.h"
#include "ui/custom/MenuUI.h"
#include "ui/custom/PaginationUI.h"

#include <utility>

std::unique_ptr<CControlUI> MakeCustomControl(const QString& element, std::shared_ptr<Skin> skin)
{
    if (element == QLatin1String("Pagination")) {
        return std::make_unique<CPaginationUI>(std::move(skin));
    }
    if (element == QLatin1String("FileTree")) {
        return std::make_unique<CFileTreeUI>(std::move(skin));
    }
    if (element == QLatin1String("DiskList")) {
        return std::make_unique<CDiskListUI>(std::move(skin));
    }
    if (element == QLatin1String("ButtonEx")) {
        return std::make_unique<CButtonExUI>(std::move(skin));
    }
    return nullptr;
}

std::unique_ptr<CControlUI> MakeMenuControl(const QString& element, std::shared_ptr<Skin> skin)
{
    if (element == QLatin1String("Menu")) {
        return std::make_unique<CMenuUI>(std::move(skin));
    }
    if (element == QLatin1String("MenuElement")) {
        return std::make_unique<CMenuElementUI>();
    }
    return nullptr;
}
