#include "app/wizard/MainTexts.h"

#include "texts/LanguageManager.h"

namespace {

std::string TextOf(std::string_view section, std::string_view key)
{
    return LanguageManager::GetInstance().GetSection(section).Get(key);
}

}  // namespace

std::string MessageText(std::string_view key)
{
    return TextOf("Messages", key);
}

std::string MainWndText(std::string_view key)
{
    return TextOf("MainWnd", key);
}

std::string DesktopText(std::string_view key)
{
    return TextOf("Desktop", key);
}

std::string ExtraText(std::string_view key)
{
    return TextOf("Extras", key);
}
