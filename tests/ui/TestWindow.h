// A skin of test markup with pictures made on the spot, and a window that writes down what it is told.
#pragma once

#include "tests/support/TempFolder.h"
#include "ui/windows/WindowImplBase.h"

#include <QString>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// The bytes of a PNG of one colour.
ByteVector MakePng(int width, int height, const QColor& color = Qt::darkGreen);

// The markup of tests/ui/skin with every picture that it names.
class TestSkin
{
public:
    TestSkin();

    const std::filesystem::path& Folder() const { return m_folder.Path(); }
    void Write(const std::string& name, const QString& markup) const;

private:
    TempFolder m_folder;
};

class TestWindow : public WindowImplBase
{
public:
    explicit TestWindow(QString file = QStringLiteral("xml\\everything.xml"))
        : m_file(std::move(file))
    {
    }

    QString GetWindowClassName() const override { return QStringLiteral("TestWindow"); }
    QString GetSkinFile() const override { return m_file; }
    bool IsDialog() const override { return true; }
    void OnFinalMessage() override { told.emplace_back("final"); }
    void InitWindow() override { told.emplace_back("init"); }
    void Notify(const Notification& notification) override;
    bool MessageFilter(QKeyEvent& event) override;
    bool HandleMessage(std::uint32_t number, std::intptr_t wParam, std::intptr_t lParam) override;
    bool OnCloseRequest() override { return mayClose; }

    template <typename Control>
    Control& Get(const char* name) const
    {
        auto* control = FindControlAs<Control>(QString::fromLatin1(name));
        if (control == nullptr) {
            throw std::runtime_error(std::string("no control ") + name);
        }
        return *control;
    }

    // "click BtnScan": all notifications so far, and then none.
    std::vector<std::string> Take() { return std::exchange(told, {}); }

    std::vector<std::string> told;
    std::vector<int> keys;
    bool mayClose = true;

protected:
    std::unique_ptr<CControlUI> CreateControl(const QString& element,
                                              const std::shared_ptr<Skin>& skin) override;

private:
    QString m_file;
};

// A window of the test skin, shown.
class UiTest : public testing::Test
{
protected:
    UiTest();
    UiTest(const UiTest&) = delete;
    UiTest& operator=(const UiTest&) = delete;
    ~UiTest() override;

    TestSkin m_skin;
    TestWindow m_window;
};
