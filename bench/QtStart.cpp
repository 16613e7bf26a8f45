#include "bench/QtStart.h"

#include <QApplication>

void StartQt()
{
    static int count = 1;
    static char name[] = "bench";
    static char* arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Never taken down: at the end of a program Qt's own objects are gone before those that main never held.
    static const auto* const application = new QApplication(count, arguments);
    static_cast<void>(application);
}
