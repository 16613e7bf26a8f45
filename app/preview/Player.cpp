#include "app/preview/Player.h"

#include "app/player/Players.h"
#include "app/popups/MessageBox.h"
#include "texts/LanguageManager.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

namespace {

constexpr int StartMilliseconds = 1000;

void TellItCannotBePlayed()
{
    const std::string text = LanguageManager::GetInstance().GetSection("Messages").Get("MSG1207");
    CMessageBox::Show(nullptr, CMessageBox::Information, {}, QString::fromStdString(text), 330,
                      150);
}

}  // namespace

void PlayVideo(const std::filesystem::path& file)
{
    StartVideo(file, [] {
        // On the player's thread; the application may have ended.
        if (QCoreApplication* const application = QCoreApplication::instance()) {
            QMetaObject::invokeMethod(application, &TellItCannotBePlayed, Qt::QueuedConnection);
        }
    });
    QEventLoop loop;
    QTimer::singleShot(StartMilliseconds, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void PlayAudio(const std::filesystem::path& file)
{
    StartAudio(file);
}
