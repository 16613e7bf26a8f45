// How the program ends when the system asks it to, whatever it does at the time.
#include "app/process/ProgramRun.h"

#include "app/popups/ScanProcessWnd.h"
#include "platform/Folders.h"
#include "platform/Process.h"
#include "tests/support/Bytes.h"
#include "tests/support/FakeEngines.h"
#include "tests/support/MadeUpSystem.h"
#include "tests/support/RunCommand.h"
#include "ui/list/ListUI.h"

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <thread>

namespace {

template <typename Window>
Window* Shown()
{
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        auto* const window = dynamic_cast<Window*>(widget);
        if (window != nullptr && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
}

class ProgramRunTest : public testing::TestWithParam<const char*>
{
protected:
    ProgramRunTest()
    {
        m_session.History().KeepRecordsIn(m_folder / "data");
        m_script.calls = std::vector<FakeScript::Call>(1000000, {50});
        m_script.inScan = [this] { m_scanWasWhole = true; };
        WriteFileBytes(m_folder / "card.img", ByteVector(4096));
    }

    void StartScan(CMainWnd& window)
    {
        window.AddImage(m_folder / "card.img");
        auto& disks = *window.FindControlAs<CListUI>(QStringLiteral("DiskList"));
        disks.SelectItem(disks.GetCount() - 1);
        QTimer::singleShot(0, &window, [&window] {
            window.SendNotify(*window.FindControl(QStringLiteral("BtnScan")), NotifyClick);
        });
    }
    // One step of what the user does before the signal comes; true when it may come.
    bool IsReady()
    {
        auto* const main = Shown<CMainWnd>();
        if (main == nullptr || std::string_view(GetParam()) == "Idle") {
            return main != nullptr;
        }
        if (!m_isStarted) {
            m_isStarted = true;
            StartScan(*main);
        }
        auto* const scan = Shown<CScanProcessWnd>();
        if (scan == nullptr || std::string_view(GetParam()) == "Scanning") {
            return scan != nullptr;
        }
        if (!m_isAsked) {
            m_isAsked = true;
            QTimer::singleShot(0, scan, [scan] { QTest::keyClick(scan, Qt::Key_Escape); });
        }
        return QApplication::activeModalWidget() != scan;
    }

    TempFolder m_folder;
    DataFolder m_data;
    MadeUpSystem m_system;
    FakeScript m_script;
    Session m_session{std::make_shared<FakeEngines>(m_script)};
    std::atomic<bool> m_scanWasWhole = false;
    bool m_isStarted = false;
    bool m_isAsked = false;
};

TEST_P(ProgramRunTest, ASignalEndsItWithoutAQuestionAndClearsAway)
{
    const std::filesystem::path clip = m_session.History().RecordsFolder() / "ScanLog/tmp.avi";
    std::filesystem::create_directories(clip.parent_path());
    WriteFileBytes(clip, Bytes("'RIFF'"));
    SingleInstance instance(QStringLiteral("lumivault-run-%1").arg(ProcessNumber()));
    ASSERT_EQ(instance.Take(), InstanceRole::First);
    bool isSent = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        if (!isSent && IsReady()) {
            isSent = true;
            std::raise(SIGTERM);
        }
    });
    timer.start(5);
    MainServices services;
    services.watchesDevices = false;
    RunProgram(instance, m_session, std::move(services));
    EXPECT_TRUE(isSent);
    EXPECT_FALSE(m_scanWasWhole);
    EXPECT_FALSE(PathExists(clip));
    EXPECT_FALSE(CPopUpWnd::IsAnyModal());
}

INSTANTIATE_TEST_SUITE_P(Times,
                         ProgramRunTest,
                         testing::Values("Idle", "Scanning", "Asking"),
                         [](const auto& row) { return std::string(row.param); });

// Whether the process has said what it does at SIGTERM.
bool CatchesTermination(int process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigCgt:")) {
            return (std::stoull(line.substr(7), nullptr, 16) >> (SIGTERM - 1) & 1) != 0;
        }
    }
    return false;
}

TEST(ProgramTest, TheBuiltProgramEndsWellBySignalAndTellsASecondStart)
{
    if (SingleInstance().Take() != InstanceRole::First) {
        GTEST_SKIP() << "this user runs the program";
    }
    const TempFolder folder;
    std::vector<std::string> environment = {"QT_QPA_PLATFORM=offscreen"};
    for (const char* name : {"HOME", "TMPDIR", "XDG_RUNTIME_DIR", "XDG_DATA_HOME",
                             "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
        environment.push_back(std::string(name) + "=" + folder.Path().string());
    }
    const std::string program = (ProgramFolder() / "lumivault").string();
    ChildProcess first({program}, environment);
    for (int i = 0; i < 2000 && !CatchesTermination(first.Number()); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_TRUE(CatchesTermination(first.Number()));
    EXPECT_EQ(RunCommand({program}, environment).exitStatus, 0) << "the first one's is shown";
    first.Signal(SIGTERM);
    const CommandResult ended = first.Wait();
    EXPECT_EQ(ended.exitStatus, 0) << ended.err;
}

}  // namespace
