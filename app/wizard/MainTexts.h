// The main window's texts in the language that is chosen.
#pragma once

#include "texts/TextFormat.h"

#include <QString>

#include <string>
#include <string_view>

// Of the sections "Messages", "MainWnd", "Desktop" and "Extras"; empty for a key that the file does not have.
std::string MessageText(std::string_view key);
std::string MainWndText(std::string_view key);
std::string DesktopText(std::string_view key);
std::string ExtraText(std::string_view key);

inline QString ToQt(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// "Size: 1.50 GB"
inline QString Labelled(std::string_view key, std::string_view value)
{
    return ToQt(FormatText("%s %s", MessageText(key), value));
}
