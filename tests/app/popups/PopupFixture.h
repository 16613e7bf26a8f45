// A main window, and the windows of tasks in front of it.
#pragma once

#include "app/popups/MessageBox.h"
#include "app/popups/PopUpWnd.h"
#include "tests/app/tasks/TaskState.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

class PlainMainWnd : public WindowImplBase
{
public:
    QString GetWindowClassName() const override { return QStringLiteral("FileRecoveryWnd"); }
    QString GetSkinFile() const override { return QStringLiteral("xml\\LikeItWnd.xml"); }
    bool HandleMessage(std::uint32_t number, std::intptr_t, std::intptr_t) override
    {
        told +=
            "message" + std::to_string(number) + (CPopUpWnd::IsAnyModal() ? " too early " : " ");
        return true;
    }
    void OnClick(const Notification&) override { told += "click "; }

    std::string told;
};

class PopupFixture : public testing::Test, public TaskState
{
protected:
    explicit PopupFixture(std::shared_ptr<IEngineMaker> engines = {})
        : TaskState(std::move(engines))
    {
        EXPECT_TRUE(main.Create(nullptr));
        main.show();
    }
    PopupFixture(const PopupFixture&) = delete;
    PopupFixture& operator=(const PopupFixture&) = delete;
    ~PopupFixture() override { CMessageBox::UseAnswerer(nullptr); }

    // What is asked from now on gets that answer.
    void AnswerWith(int code)
    {
        CMessageBox::UseAnswerer([this, code](CMessageBox::Kind, const QString& message) {
            asked.push_back(message.toStdString());
            return code;
        });
    }
    // In the event loop, once the condition holds.
    static void When(std::function<bool()> isTime, std::function<void()> act)
    {
        auto* const timer = new QTimer(qApp);
        QObject::connect(timer, &QTimer::timeout, timer,
                         [timer, isTime = std::move(isTime), act = std::move(act)] {
                             if (isTime()) {
                                 timer->stop();
                                 timer->deleteLater();
                                 act();
                             }
                         });
        timer->start(5);
    }
    static void Click(const WindowImplBase& window, const char* name)
    {
        CControlUI* const control = window.FindControl(QString::fromLatin1(name));
        ASSERT_NE(control, nullptr) << name;
        control->SendNotify(NotifyClick);
    }
    // The window that stands in front, when it is of that class.
    static WindowImplBase* FindWindow(const char* markupTitle)
    {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            auto* const window = dynamic_cast<WindowImplBase*>(widget);
            if (window != nullptr && window->isVisible() &&
                window->FindControl(QString::fromLatin1(markupTitle)) != nullptr) {
                return window;
            }
        }
        return nullptr;
    }
    static std::string TextOf(const WindowImplBase& window, const char* name)
    {
        CControlUI* const control = window.FindControl(QString::fromLatin1(name));
        return control != nullptr ? control->GetText().toStdString() : "no control";
    }
    static void Pump(int milliseconds)
    {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    }

    PlainMainWnd main;
    std::vector<std::string> asked;
};
