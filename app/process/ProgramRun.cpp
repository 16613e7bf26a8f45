#include "app/process/ProgramRun.h"

#include "app/player/Players.h"
#include "platform/Folders.h"
#include "platform/TerminationSignals.h"

#include <QApplication>
#include <QPointer>
#include <QScreen>
#include <QSocketNotifier>

#include <utility>

namespace {

constexpr unsigned SecondsForTheEnd = 10;

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

void RunWindow(SingleInstance& instance,
               Session& session,
               MainServices services,
               const std::vector<std::filesystem::path>& images)
{
    // Deletes itself when it is closed.
    const QPointer<CMainWnd> alive(new CMainWnd(session, std::move(services)));
    alive->setWindowTitle(ProgramTitle);
    if (!alive->Create(nullptr)) {
        delete alive.data();
        return;
    }
    ShowCentered(*alive);
    alive->OpenImages(images);
    instance.OnShowRequest([alive] { return alive != nullptr && ShowAgain(*alive); });
    instance.OnOpenRequest([alive](const std::vector<std::filesystem::path>& more) {
        if (alive != nullptr) {
            alive->OpenImages(more);
        }
    });
    const TerminationSignals signalsToEnd;
    QSocketNotifier notifier(signalsToEnd.Descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&notifier] {
        notifier.setEnabled(false);
        TerminationSignals::EndWithin(SecondsForTheEnd);
        QCoreApplication::exit();  // without a question, also while one is asked
    });
    QApplication::exec();
    instance.OnShowRequest(nullptr);
    instance.OnOpenRequest(nullptr);
    delete alive.data();
}

// Players that were left running, and the clip that the last of them played.
void ClearAway(Session& session)
{
    KillPlayers();
    WaitForPlayerThreads();
    (void)RemoveFile(session.History().ClipFile());  // there usually is none
}

}  // namespace

void RunProgram(SingleInstance& instance,
                Session& session,
                MainServices services,
                const std::vector<std::filesystem::path>& images)
{
    RunWindow(instance, session, std::move(services), images);
    ClearAway(session);
}
