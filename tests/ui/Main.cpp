// Tests of windows: without a screen, and with nothing of the user's own session.
#include "tests/support/TempFolder.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    const TempFolder runtimeFolder;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtimeFolder.Path().string()));
    qputenv("QT_ACCESSIBILITY", "1");
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
