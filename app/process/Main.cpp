// The program with windows: one for each user.
#include "app/popups/MessageBox.h"
#include "app/process/HelpPages.h"
#include "app/process/ProgramOptions.h"
#include "app/process/ProgramRun.h"
#include "app/process/SingleInstance.h"
#include "platform/FaultGuard.h"
#include "platform/Folders.h"
#include "platform/HttpGet.h"
#include "platform/Process.h"
#include "session/Session.h"
#include "texts/LanguageManager.h"

#include <QApplication>

#include <filesystem>
#include <iostream>
#include <string_view>
#include <vector>

namespace {

constexpr char DesktopFileName[] = "lumivault";

// What is no option, as whole paths: the first window stands in another folder. Qt has taken its own options by then.
std::vector<std::filesystem::path> ImagesIn(int count, char** arguments)
{
    std::vector<std::filesystem::path> images;
    bool isOption = true;
    for (int index = 1; index < count; ++index) {
        const std::string_view argument = arguments[index];
        if (isOption && argument.starts_with('-')) {
            isOption = argument != "--";
            continue;
        }
        std::error_code ignored;
        images.push_back(std::filesystem::absolute(argument, ignored));
    }
    return images;
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
    if (AnswersInWords(argumentCount, arguments, std::cout)) {
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
    const std::vector<std::filesystem::path> images = ImagesIn(argumentCount, arguments);
    const InstanceRole role = instance.Take(images);
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
    RunProgram(instance, session, Services(), images);
    return 0;
}
