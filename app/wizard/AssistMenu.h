// The menu of the button at the top: languages, help, and the way out.
#pragma once

#include <QString>

#include <cstdint>

class WindowImplBase;

// Opens below the button. A choice comes to the window as a message: another language, or the number of an item.
void ShowAssistMenu(WindowImplBase& window);
// The item whose message that is; empty for another message.
QString MenuItemOf(std::uint32_t message);
