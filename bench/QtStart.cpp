#include "bench/QtStart.h"

#include <QApplication>

void StartQt()
{
    static int count = 1;
    static char name[] = "bench";
    static char* arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QApplication application(count, arguments);
}
