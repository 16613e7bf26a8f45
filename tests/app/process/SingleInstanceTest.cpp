// Two starts at once: the second one stands on a thread, as another process would stand elsewhere.
#include "app/process/SingleInstance.h"

#include "platform/Process.h"

#include <QCoreApplication>
#include <QLocalSocket>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

QString TestName(const char* suffix)
{
    return QStringLiteral("lumivault-test-%1-%2").arg(ProcessNumber()).arg(suffix);
}

InstanceRole TakeElsewhere(const QString& name,
                           const std::vector<std::filesystem::path>& images = {})
{
    InstanceRole role = InstanceRole::First;
    std::atomic<bool> done = false;
    std::thread other([&] {
        SingleInstance second(name);
        role = second.Take(images);
        done = true;
    });
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    other.join();
    return role;
}

TEST(SingleInstanceTest, TheSecondStartIsToldWhetherAWindowWasShown)
{
    const QString name = TestName("shows");
    SingleInstance first(name);
    ASSERT_EQ(first.Take(), InstanceRole::First);
    EXPECT_EQ(TakeElsewhere(name), InstanceRole::SilentElse) << "before there is a window";
    int asked = 0;
    first.OnShowRequest([&asked] { return ++asked > 0; });
    EXPECT_EQ(TakeElsewhere(name), InstanceRole::ShownElse);
    EXPECT_EQ(asked, 1);
    first.OnShowRequest([] { return false; });
    EXPECT_EQ(TakeElsewhere(name), InstanceRole::SilentElse);
}

TEST(SingleInstanceTest, ASecondStartHandsItsImagesOver)
{
    const QString name = TestName("hands");
    SingleInstance first(name);
    ASSERT_EQ(first.Take(), InstanceRole::First);
    std::vector<std::filesystem::path> came;
    first.OnShowRequest([] { return true; });
    first.OnOpenRequest([&came](const auto& images) { came = images; });
    const std::vector<std::filesystem::path> images = {"/a card.img", "/%\n\xFF.img"};
    EXPECT_EQ(TakeElsewhere(name, images), InstanceRole::ShownElse);
    EXPECT_EQ(came, images);
    came.clear();
    EXPECT_EQ(TakeElsewhere(name, {"here.img"}), InstanceRole::SilentElse) << "no whole path";
    EXPECT_EQ(TakeElsewhere(name, {"/" + std::string(5000, 'x')}), InstanceRole::SilentElse);
    EXPECT_EQ(TakeElsewhere(name, {std::string("/a\0b", 4)}), InstanceRole::SilentElse);
    EXPECT_TRUE(came.empty());
}

TEST(SingleInstanceTest, TheNameIsFreeOnceTheFirstOneIsGone)
{
    const QString name = TestName("gone");
    {
        SingleInstance first(name);
        ASSERT_EQ(first.Take(), InstanceRole::First);
    }
    EXPECT_EQ(TakeElsewhere(name), InstanceRole::First);
}

TEST(SingleInstanceTest, StrangersThatSayAnythingShowNothing)
{
    const QString name = TestName("strangers");
    SingleInstance first(name);
    ASSERT_EQ(first.Take(), InstanceRole::First);
    int asked = 0;
    first.OnShowRequest([&asked] { return ++asked > 0; });
    for (const QByteArray& text :
         {QByteArray("hide\n"), QByteArray(1 << 20, 'x'), QByteArray("\n")}) {
        QLocalSocket stranger;
        stranger.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
        stranger.connectToServer(name);
        ASSERT_TRUE(stranger.waitForConnected(1000));
        stranger.write(text);
        stranger.flush();
        for (int turn = 0; turn < 20; ++turn) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        }
    }
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(TakeElsewhere(name), InstanceRole::ShownElse);
}

}  // namespace
