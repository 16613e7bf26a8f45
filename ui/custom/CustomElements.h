// Makers of the elements that are not plain, for the callbacks of those windows that have them.
#pragma once

#include "ui/controls/ControlUI.h"
#include "ui/markup/Skin.h"

#include <memory>

// "Pagination", "FileTree", "DiskList" and "ButtonEx"; null for others.
std::unique_ptr<CControlUI> MakeCustomControl(const QString& element, std::shared_ptr<Skin> skin);
// "Menu" and "MenuElement"; null for others.
std::unique_ptr<CControlUI> MakeMenuControl(const QString& element, std::shared_ptr<Skin> skin);
