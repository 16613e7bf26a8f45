// Tests of the main window: without a screen, and with nothing of the user's own session.
#include "tests/support/Bytes.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    const TempFolder userFolder;
    const QByteArray folder = QByteArray::fromStdString(userFolder.Path().string());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_RUNTIME_DIR", folder);
    qputenv("XDG_CONFIG_HOME", folder);
    // Languages that a test chooses are written down here, and not beside the programs, where other tests read.
    std::filesystem::create_directory(userFolder / "OrvantaLumivault");
    WriteFileBytes(userFolder / "OrvantaLumivault/config.ini",
                   Bytes("'[DefaultLanguage]' 0A 'Default=English' 0A"));
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
