// The five windows over running tasks: every way to stop them, what they ask, and what they leave.
#include "app/popups/CreateImageProcessWnd.h"
#include "app/popups/PreviewProcessWnd.h"
#include "app/popups/RecoverProcessWnd.h"
#include "app/popups/RescueProcessWnd.h"
#include "app/popups/ScanProcessWnd.h"
#include "app/popups/SearchProcessWnd.h"
#include "app/preview/PreviewWnd.h"
#include "tests/app/popups/PopupFixture.h"
#include "ui/list/ListUI.h"

#include <QElapsedTimer>
#include <QTest>

#include <future>
#include <memory>
#include <thread>

namespace {

// One window of each task. Its work stands still at its beginning until it is let go on; only the image and the rescue have
// just begun.
class TaskWindows : public PopupFixture
{
protected:
    TaskWindows()
    {
        script.Add("a.jpg", 4);
        script.Add("b.jpg", 4);
    }

    void Hold()
    {
        script.begins = [this] { WaitInside(); };
        script.restores = [this](const FileRecord&) {
            WaitInside();
            return ResultSuccess;
        };
    }
    void WaitInside()
    {
        isInside = true;
        hold.wait();
    }

    std::unique_ptr<CTaskWnd> Make(TaskKind kind)
    {
        OpenAll();
        SelectAll();
        rows = First().engine->Search(AllFilesPattern).rows;
        switch (kind) {
        case TaskKind::Scan: {
            auto window = std::make_unique<CScanProcessWnd>();
            window->targets = {&First()};
            return window;
        }
        case TaskKind::Search: {
            auto window = std::make_unique<CSearchProcessWnd>();
            window->targets = {&First()};
            window->SetFilter("*.jpg");
            return window;
        }
        case TaskKind::Restore:
            return std::make_unique<CRecoverProcessWnd>();
        case TaskKind::Preview: {
            auto window = std::make_unique<CPreviewProcessWnd>();
            window->previewWnd = &preview;
            window->record = rows.data();
            return window;
        }
        case TaskKind::Rescue: {
            auto window = std::make_unique<CRescueProcessWnd>();
            disk = MakeDisk(256 << 20);
            window->source = TargetOf(*disk.volume);
            window->outputPath = folder / "new.img";
            return window;
        }
        case TaskKind::Image: {
            auto window = std::make_unique<CCreateImageProcessWnd>();
            disk = MakeDisk(256 << 20);
            window->targets = {&disk};
            window->outputPath = folder / "new.img";
            return window;
        }
        }
        return nullptr;
    }

    std::promise<void> let;
    std::shared_future<void> hold = let.get_future().share();
    std::atomic<bool> isInside = false;
    std::vector<FoundRow> rows;
    RecoveryTarget disk;
    CPreviewWnd preview;
};

struct WayCase
{
    const char* name;
    TaskKind kind;
    const char* way;
    int codeOfYes;
    const char* toldOfYes;
};

class StopTest : public TaskWindows, public testing::WithParamInterface<WayCase>
{
protected:
    void Stop(CTaskWnd& window) const
    {
        const std::string_view way = GetParam().way;
        if (way == "Escape") {
            QTest::keyClick(&window, Qt::Key_Escape);
        } else if (way == "close") {
            EXPECT_FALSE(window.close());
        } else {
            Click(window, GetParam().way);
        }
    }
};

TEST_P(StopTest, NoGoesOnAndYesEndsIt)
{
    int answers = 0;
    CMessageBox::UseAnswerer([&](CMessageBox::Kind kind, const QString& message) {
        EXPECT_EQ(kind, CMessageBox::Question);
        EXPECT_FALSE(message.isEmpty());
        EXPECT_FALSE(GateOf(GetParam().kind).lock.try_lock()) << "the worker would go on";
        if (++answers == 1) {
            return CloseCancelled;
        }
        let.set_value();
        return CloseDone;
    });
    const std::unique_ptr<CTaskWnd> window = Make(GetParam().kind);
    Hold();
    window->SetMain(&main, &state);
    ASSERT_TRUE(window->Create(&main, 350, 250));
    const bool isHeld = GetParam().kind != TaskKind::Image && GetParam().kind != TaskKind::Rescue;
    When([&] { return window->isVisible() && (isInside || !isHeld); },
         [&] {
             Stop(*window);
             EXPECT_FALSE(GateOf(GetParam().kind).cancelRequested);
             Stop(*window);
         });
    EXPECT_EQ(window->DoModal(), GetParam().codeOfYes);
    EXPECT_EQ(answers, 2);
    EXPECT_FALSE(window->isVisible());
    EXPECT_LT(window->Board().Value("progress"), 100);
    Pump(0);
    EXPECT_EQ(main.told, GetParam().toldOfYes);
}

constexpr WayCase Ways[] = {
    {"ScanByEscape", TaskKind::Scan, "Escape", 1, "message1025 "},
    {"ScanByClose", TaskKind::Scan, "close", 1, "message1025 "},
    {"ScanByButton", TaskKind::Scan, "cancelbtn", 1, "message1025 "},
    {"SearchByEscape", TaskKind::Search, "Escape", 2, "message1026 "},
    {"SearchByClose", TaskKind::Search, "close", 2, "message1026 "},
    {"SearchByButton", TaskKind::Search, "closebtn", 2, "message1026 "},
    {"RestoreByEscape", TaskKind::Restore, "Escape", 2, ""},
    {"RestoreByClose", TaskKind::Restore, "close", 2, ""},
    {"RestoreByButton", TaskKind::Restore, "CancelBtn", 2, ""},
    {"PreviewByEscape", TaskKind::Preview, "Escape", 2, ""},
    {"PreviewByClose", TaskKind::Preview, "close", 2, ""},
    {"PreviewByButton", TaskKind::Preview, "cancelbtn", 2, ""},
    {"ImageByEscape", TaskKind::Image, "Escape", 2, ""},
    {"ImageByClose", TaskKind::Image, "close", 2, ""},
    {"ImageByButton", TaskKind::Image, "closebtn", 2, ""},
    {"RescueByButton", TaskKind::Rescue, "cancelbtn", 2, ""},
};
INSTANTIATE_TEST_SUITE_P(Tasks, StopTest, testing::ValuesIn(Ways), [](const auto& row) {
    return std::string(row.param.name);
});

class TaskWndTest : public TaskWindows
{};

TEST_F(TaskWndTest, TheQuestionIsAWindowInFrontAndHoldsTheWorker)
{
    const std::unique_ptr<CTaskWnd> window = Make(TaskKind::Scan);
    script.calls = std::vector<FakeScript::Call>(200, {50});
    script.calls.push_back({100, 100});
    Hold();
    window->SetMain(&main, &state);
    ASSERT_TRUE(window->Create(&main, 350, 250));
    When([&] { return isInside.load() && window->isVisible(); },
         [&] { Click(*window, "cancelbtn"); });
    bool wasAsked = false;
    When([] { return FindWindow("message") != nullptr; },
         [&] {
             wasAsked = true;
             WindowImplBase* const question = FindWindow("message");
             EXPECT_EQ(TextOf(*question, "title"), "Question");
             EXPECT_EQ(question->focusWidget()->objectName(), "okbtn");
             EXPECT_EQ(window->focusWidget()->objectName(), "cancelbtn");
             let.set_value();
             Pump(100);
             EXPECT_EQ(window->Board().Text("percent"), "") << "it stands still";
             Click(*window, "cancelbtn");
             EXPECT_EQ(FindWindow("message"), question) << "asked once";
             QTest::keyClick(question, Qt::Key_Escape);
         });
    EXPECT_EQ(window->DoModal(), CloseDone);
    EXPECT_TRUE(wasAsked);
    EXPECT_EQ(window->Board().Text("percent"), "Scanned: 100%");
    EXPECT_EQ(TextOf(*window, "percent"), "Scanned: 100%") << "the last value reaches the label";
    EXPECT_EQ(TextOf(*window, "title"), "Scan");
}

TEST_F(TaskWndTest, NothingElseCanBeUsedAndWhatIsPostedComesBehindTheOutermost)
{
    const std::unique_ptr<CTaskWnd> window = Make(TaskKind::Scan);
    script.begins = [this] { WaitInside(); };
    window->SetMain(&main, &state);
    ASSERT_TRUE(window->Create(&main, 350, 250));
    main.show();
    When([&] { return isInside.load(); },
         [&] {
             auto* const button = main.FindControl(QStringLiteral("okbtn"))->Widget();
             QTest::mouseClick(button, Qt::LeftButton);
             QTest::keyClick(button, Qt::Key_Space);
             EXPECT_FALSE(main.close());
             EXPECT_EQ(main.told, "");
             let.set_value();
         });
    CPopUpWnd outer(QStringLiteral("LikeItWnd.xml"));
    ASSERT_TRUE(outer.Create(&main));
    When([] { return CPopUpWnd::IsAnyModal(); },
         [&] {
             EXPECT_EQ(window->DoModal(), CloseDone);
             Pump(20);
             EXPECT_EQ(main.told, "") << "another one is open";
             outer.CloseWith(CloseFailed);
             outer.CloseWith(CloseDone);
         });
    EXPECT_EQ(outer.DoModal(), CloseFailed) << "the first code counts";
    EXPECT_EQ(main.told, "");
    Pump(20);
    EXPECT_EQ(main.told, "message1025 ");
    QTest::mouseClick(main.FindControl(QStringLiteral("okbtn"))->Widget(), Qt::LeftButton);
    EXPECT_EQ(main.told, "message1025 click ");
}

TEST_F(TaskWndTest, FailuresStandInRedOnTopAndNoNameIsMarkup)
{
    script.Add("<b>{c #00FF00}x.jpg", 4);
    script.Add("bad.jpg", 4);
    const std::unique_ptr<CTaskWnd> window = Make(TaskKind::Restore);
    script.restores = [](const FileRecord& record) {
        return record.NameText() == "bad.jpg" ? ResultReadFault : ResultSuccess;
    };
    window->SetMain(&main, &state);
    ASSERT_TRUE(window->Create(&main, 500, 220));
    const auto isShown = [&](const char* name) {
        return window->FindControl(QString::fromLatin1(name))->IsVisible();
    };
    QSize grown;
    When([&] { return isShown("FinishBtn"); },
         [&] {
             EXPECT_FALSE(isShown("CancelBtn"));
             EXPECT_FALSE(isShown("DetailList"));
             Click(*window, "DetailBtn");
             EXPECT_TRUE(isShown("DetailList"));
             grown = window->size();
             Click(*window, "DetailBtn");
             EXPECT_FALSE(isShown("DetailList"));
             EXPECT_EQ(window->size(), QSize(500, 220));
             Click(*window, "FinishBtn");
         });
    EXPECT_EQ(window->DoModal(), CloseDone);
    EXPECT_GT(grown.width(), 500);
    EXPECT_GT(grown.height(), 220);
    const auto* const list = window->FindControlAs<CListUI>(QStringLiteral("DetailList"));
    ASSERT_EQ(list->GetCount(), 4);
    const QString first = list->GetItemAt(0)->GetColumnText(0);
    EXPECT_TRUE(first.startsWith(QLatin1String("<c #FF0000>")));
    EXPECT_TRUE(PlainText(first, true).endsWith(QLatin1String("photo/bad.jpg")));
    EXPECT_EQ(PlainText(list->GetItemAt(0)->GetColumnText(1), true).toStdString(),
              ErrorText(ResultReadFault));
    const QString last = list->GetItemAt(3)->GetColumnText(0);
    EXPECT_TRUE(PlainText(last, true).endsWith(QLatin1String("photo/<b>{c #00FF00}x.jpg")));
    EXPECT_EQ(ParseTextMarkup(last, true).size(), 1u) << "a plain run";
    EXPECT_EQ(PlainText(list->GetItemAt(3)->GetColumnText(1), true), "Success");
    EXPECT_EQ(TextOf(*window, "recovered"), "Files done: 4 of 4, recovered: 3, failed: 1");
}

TEST_F(TaskWndTest, OneThatNeverClosesItselfIsClosedByItsUser)
{
    CRecoverProcessWnd window;
    window.singleMode = true;
    window.SetMain(&main, &state);
    ASSERT_TRUE(window.Create(&main, 500, 200));
    When([&] { return window.isVisible() && GateOf(TaskKind::Restore).finished; },
         [&] { When([] { return true; }, [&] { Click(window, "CancelBtn"); }); });
    EXPECT_EQ(window.DoModal(), CloseCancelled);
}

TEST_F(TaskWndTest, TheEndOfTheProgramEndsTheTask)
{
    const std::unique_ptr<CTaskWnd> window = Make(TaskKind::Scan);
    script.calls = std::vector<FakeScript::Call>(100000, {50});
    script.calls.push_back({100, 100});
    window->SetMain(&main, &state);
    ASSERT_TRUE(window->Create(&main, 350, 250));
    int code = 0;
    QTimer::singleShot(0, qApp, [&] { code = window->DoModal(); });
    When([&] { return window->isVisible(); }, [] { QCoreApplication::exit(0); });
    QApplication::exec();
    EXPECT_EQ(code, CloseCancelled);
    EXPECT_EQ(window->Board().Value("progress"), 50);
    EXPECT_FALSE(CPopUpWnd::IsAnyModal());
}

class HangingEngines : public IEngineMaker
{
public:
    std::unique_ptr<IFileRecoveryParse> Make(const EngineTarget&,
                                             ScanDepth,
                                             const std::shared_ptr<ScanLogDirectory>&,
                                             ResultCode*) override
    {
        while (isHanging) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return nullptr;
    }

    std::atomic<bool> isHanging = true;
};

class OpeningTest : public PopupFixture
{
protected:
    explicit OpeningTest(
        std::shared_ptr<HangingEngines> engines = std::make_shared<HangingEngines>())
        : PopupFixture(engines), hanging(std::move(engines))
    {
    }
    ~OpeningTest() override { hanging->isHanging = false; }

    std::shared_ptr<HangingEngines> hanging;
};

TEST_F(OpeningTest, OneThatHangsShowsALineInTheMainWindowThatGivesItUp)
{
    CScanProcessWnd window;
    window.targets = {&First()};
    window.SetMain(&main, &state);
    ASSERT_TRUE(window.Create(&main, 350, 250));
    const auto findButton = [this] {
        return main.findChild<QWidget*>(QStringLiteral("openingcancelbtn"));
    };
    QElapsedTimer clock;
    clock.start();
    When([&] { return findButton() != nullptr; },
         [&] {
             EXPECT_GE(clock.elapsed(), 250);
             EXPECT_FALSE(window.isVisible());
             QTest::mouseClick(findButton(), Qt::LeftButton);
         });
    EXPECT_EQ(window.DoModal(), CloseCancelled);
    Pump(0);
    EXPECT_EQ(findButton(), nullptr);
    EXPECT_EQ(main.told, "") << "no results to be shown, no click of the window's own";
}

struct BoxCase
{
    CMessageBox::Kind kind;
    const char* title;
    const char* way;
    int code;
};

class MessageBoxTest : public PopupFixture, public testing::WithParamInterface<BoxCase>
{};

TEST_P(MessageBoxTest, HasItsTitleAndOneWayToSayYes)
{
    const QString message = QStringLiteral("{c #FF0000}a<b>\nof %1");
    When([] { return FindWindow("message") != nullptr; },
         [&] {
             WindowImplBase* const box = FindWindow("message");
             EXPECT_EQ(TextOf(*box, "title"), GetParam().title);
             EXPECT_EQ(TextOf(*box, "message"), message.toStdString());
             EXPECT_EQ(box->size(), QSize(400, 150));
             QTest::keyClick(box, Qt::Key_Return);
             if (std::string_view(GetParam().way) == "Escape") {
                 QTest::keyClick(box, Qt::Key_Escape);
             } else {
                 Click(*box, GetParam().way);
             }
         });
    EXPECT_EQ(CMessageBox::Show(&main, GetParam().kind, {}, message, 400, 150), GetParam().code);
}

constexpr BoxCase Boxes[] = {
    {CMessageBox::Error, "Error", "okbtn", CloseDone},
    {CMessageBox::Confirm, "Confirmation", "cancelbtn", CloseCancelled},
    {CMessageBox::Information, "Information", "closebtn", CloseCancelled},
    {CMessageBox::Warning, "Warning", "okbtn", CloseDone},
    {CMessageBox::Question, "Question", "Escape", CloseCancelled},
};
INSTANTIATE_TEST_SUITE_P(Kinds, MessageBoxTest, testing::ValuesIn(Boxes), [](const auto& row) {
    return std::string(row.param.title);
});

}  // namespace
