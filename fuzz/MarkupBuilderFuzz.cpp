// A markup file, made into the controls of a window that is never shown, laid out and drawn.
#include "ui/custom/CustomElements.h"
#include "ui/windows/WindowImplBase.h"

#include <QApplication>

#include <utility>

namespace {

// One file under every name, so that what it includes is itself.
class OneFilePackage : public SkinPackage
{
public:
    explicit OneFilePackage(std::vector<std::uint8_t> bytes) : m_bytes(std::move(bytes)) {}

protected:
    std::optional<std::vector<std::uint8_t>> ReadPlain(const QString&) const override
    {
        return m_bytes;
    }

private:
    std::vector<std::uint8_t> m_bytes;
};

class FuzzWindow : public WindowImplBase
{
public:
    QString GetWindowClassName() const override { return QStringLiteral("Fuzz"); }
    QString GetSkinFile() const override { return QStringLiteral("a.xml"); }

protected:
    std::unique_ptr<CControlUI> CreateControl(const QString& element,
                                              const std::shared_ptr<Skin>& skin) override
    {
        auto control = MakeCustomControl(element, skin);
        return control ? std::move(control) : MakeMenuControl(element, skin);
    }
};

void StartQt()
{
    static int count = 1;
    static char name[] = "fuzz";
    static char* arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QApplication application(count, arguments);
}

}  // namespace

// What the font library of the system keeps until the end is no leak of this program.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): the name that the sanitizer looks for
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartQt();
    if (size > 8192) {
        return 0;
    }
    WindowImplBase::UsePackage(
        std::make_shared<OneFilePackage>(std::vector<std::uint8_t>(data, data + size)));
    {
        FuzzWindow window;
        if (window.Create(nullptr, 300, 200)) {
            QImage image(300, 200, QImage::Format_ARGB32_Premultiplied);
            window.render(&image);
        }
    }
    WindowImplBase::UsePackage(nullptr);
    return 0;
}
