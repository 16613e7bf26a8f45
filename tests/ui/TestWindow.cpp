#include "tests/ui/TestWindow.h"

#include "ui/custom/CustomElements.h"

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QKeyEvent>

#include <utility>

ByteVector MakePng(int width, int height, const QColor& color)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return {bytes.begin(), bytes.end()};
}

TestSkin::TestSkin()
{
    std::filesystem::copy(LUMIVAULT_TEST_SKIN, m_folder.Path(),
                          std::filesystem::copy_options::recursive);
    for (const char* name :
         {"unchecked.png", "checked.png", "partial.png", "closed.png", "open.png"}) {
        WriteFileBytes(m_folder / name, MakePng(16, 16));
    }
    WriteFileBytes(m_folder / "button.png", MakePng(40, 40));
    WriteFileBytes(m_folder / "banner.png", MakePng(20, 40, Qt::cyan));
    WriteFileBytes(m_folder / "flags.png", MakePng(20, 12, Qt::red));
    WriteFileBytes(m_folder / "expand_flag.png", MakePng(24, 12, Qt::blue));
    WriteFileBytes(m_folder / "point.png", MakePng(16, 16, Qt::black));
}

void TestSkin::Write(const std::string& name, const QString& markup) const
{
    const QByteArray bytes = markup.toUtf8();
    WriteFileBytes(m_folder / name, ByteVector(bytes.begin(), bytes.end()));
}

void TestWindow::Notify(const Notification& notification)
{
    told.push_back(
        (notification.type + QLatin1Char(' ') + notification.sender->GetName()).toStdString());
    WindowImplBase::Notify(notification);
}

bool TestWindow::MessageFilter(QKeyEvent& event)
{
    keys.push_back(event.key());
    return true;
}

bool TestWindow::HandleMessage(std::uint32_t number, std::intptr_t wParam, std::intptr_t lParam)
{
    told.push_back("message " + std::to_string(number) + " " + std::to_string(wParam) + " " +
                   std::to_string(lParam));
    return true;
}

std::unique_ptr<CControlUI> TestWindow::CreateControl(const QString& element,
                                                      const std::shared_ptr<Skin>& skin)
{
    return MakeCustomControl(element, skin);
}

UiTest::UiTest()
{
    WindowImplBase::UsePackage(
        SkinPackage::FromFolder(QString::fromStdString(m_skin.Folder().string())));
    if (!m_window.Create(nullptr)) {
        throw std::runtime_error("the window was not made");
    }
    m_window.show();
    m_window.activateWindow();
    QApplication::processEvents();
    m_window.told.clear();
}

UiTest::~UiTest()
{
    WindowImplBase::UsePackage(nullptr);
}
