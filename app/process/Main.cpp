// The program with windows: brings up one window for each user, runs it, and clears away what a run leaves behind.
#include "app/player/Players.h"
#include "app/popups/MessageBox.h"
#include "app/process/HelpPages.h"
#include "app/process/SingleInstance.h"
#include "app/wizard/MainWnd.h"
#include "platform/FaultGuard.h"
#include "platform/Folders.h"
#include "platform/HttpGet.h"
#include "platform/TerminationSignals.h"
#include "platform/Version.h"
#include "session/Session.h"
#include "texts/LanguageManager.h"

#include <QApplication>
#include <QPointer>
#include <QScreen>
#include <QSocketNotifier>

#include <cstdio>
#include <string_view>

namespace {

constexpr char WindowTitle[] = "Orvanta Lumivault";
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

void ShowCentered(QWidget& window)
{
    if (const QScreen* const screen = window.screen()) {
        window.move(screen->availableGeometry().center() - window.rect().center());
    }
    window.show();
}

bool ShowAgain(QWidget& window)
{
    if (!window.isVisible() && !window.isMinimized()) {
        return false;
    }
    if (window.isMinimized()) {
        window.showNormal();
    }
    window.raise();
    window.activateWindow();
    return true;
}

MainServices Services()
{
    MainServices services;
    services.openMenuItem = [](const QString& item) {
        OpenHelpPage(QApplication::activeWindow(), item);
    };
    return services;
}

void RunWindow(SingleInstance& instance, Session& session)
{
    // Deletes itself when it is closed.
    const QPointer<CMainWnd> alive(new CMainWnd(session, Services()));
    alive->setWindowTitle(WindowTitle);
    if (!alive->Create(nullptr)) {
        delete alive.data();
        return;
    }
    ShowCentered(*alive);
    instance.OnShowRequest([alive] { return alive != nullptr && ShowAgain(*alive); });
    const TerminationSignals signalsToEnd;
    QSocketNotifier notifier(signalsToEnd.Descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&notifier] {
        notifier.setEnabled(false);
        QCoreApplication::exit();  // without a question, also while one is asked
    });
    QApplication::exec();
    instance.OnShowRequest(nullptr);
    delete alive.data();
}

// Players that were left running, and the clip that the last of them played.
void ClearAway(Session& session)
{
    KillPlayers();
    WaitForPlayerThreads();
    (void)RemoveFile(session.History().RecordsFolder() / "tmp.avi");  // in general there is none
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
    QApplication::setApplicationDisplayName(WindowTitle);
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
    RunWindow(instance, session);
    ClearAway(session);
    return 0;
}
