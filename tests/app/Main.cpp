// Tests of the program's windows: without a screen, and with nothing of the user's own session.
#include "tests/support/TempFolder.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    const TempFolder runtimeFolder;
    const QByteArray folder = QByteArray::fromStdString(runtimeFolder.Path().string());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_RUNTIME_DIR", folder);
    // The language that a test chooses is written down there.
    qputenv("XDG_CONFIG_HOME", folder);
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
