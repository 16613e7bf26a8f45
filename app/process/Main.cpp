// The program with windows: one for each user.
#include "app/popups/MessageBox.h"
#include "app/process/HelpPages.h"
#include "app/process/ProgramRun.h"
#include "app/process/SingleInstance.h"
#include "platform/FaultGuard.h"
#include "platform/Folders.h"
#include "platform/HttpGet.h"
#include "platform/Process.h"
#include "platform/Version.h"
#include "session/Session.h"
#include "texts/LanguageManager.h"

#include <QApplication>

#include <cstdio>
#include <string_view>

namespace {

constexpr char DesktopFileName[] = "lumivault";
constexpr char HelpText[] =
    "Usage: lumivault [OPTION]\n"
    "\n"
    "Finds deleted and lost photos, audio and video on a drive or in a disk image, and saves\n"
    "them to another drive. Opens a window; lumivault-cli does the same without one.\n"
    "\n"
    "  -h, --help     print this help and exit\n"
    "  --version      print the version and exit\n";

// True when the command line asked for a text only.
bool AnswersInWords(int count, char** arguments)
{
    for (int index = 1; index < count; ++index) {
        const std::string_view argument = arguments[index];
        if (argument == "-h" || argument == "--help") {
            std::fputs(HelpText, stdout);
            return true;
        }
        if (argument == "--version") {
            std::printf("lumivault %s\n", LumivaultVersion);
            return true;
        }
    }
    return false;
}

// Where the player's window goes can be said on X alone, which most Wayland desktops offer too.
void PreferX()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && !qEnvironmentVariableIsEmpty("DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
    }
}

MainServices Services()
{
    MainServices services;
    services.openMenuItem = [](const QString& item) {
        OpenHelpPage(QApplication::activeWindow(), item);
    };
    return services;
}

}  // namespace

int main(int argumentCount, char** arguments)
{
    if (AnswersInWords(argumentCount, arguments)) {
        return 0;
    }
    IgnoreBrokenPipes();
    InstallFaultHandler(ApplicationDataFolder() / "OrvantaLumivault");
    PrepareHttp();
    PreferX();
    QApplication application(argumentCount, arguments);
    QApplication::setApplicationDisplayName(ProgramTitle);
    QApplication::setDesktopFileName(DesktopFileName);
    QApplication::setQuitOnLastWindowClosed(false);
    SingleInstance instance;
    const InstanceRole role = instance.Take();
    if (role == InstanceRole::SilentElse) {
        CMessageBox::Show(nullptr, CMessageBox::Information, {},
                          QString::fromStdString(
                              LanguageManager::GetInstance().GetSection("Desktop").Get("DSK0303")),
                          350, 150);
    }
    if (role != InstanceRole::First) {
        return 0;
    }
    Session session;
    RunProgram(instance, session, Services());
    return 0;
}
