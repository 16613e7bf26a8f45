#include "app/wizard/ResultBar.h"

#include "app/wizard/MainTexts.h"

#include <QKeyEvent>

namespace {

// Between two keys of somebody who types fast; what is listed is made anew once for both.
constexpr int TypingMilliseconds = 60;

}  // namespace

ResultBar::ResultBar(const WindowImplBase& window)
    : m_field(window.FindControlAs<CEditUI>(QStringLiteral("FilterEdit"))),
      m_counts(window.FindControl(QStringLiteral("FilterCount"))),
      m_hideDoubles(window.FindControlAs<COptionUI>(QStringLiteral("OptHideDoubles")))
{
    m_delay.setSingleShot(true);
    m_delay.setInterval(TypingMilliseconds);
    connect(&m_delay, &QTimer::timeout, this,
            [this] { onFilter(NameFilter(m_field->GetText().toStdString())); });
    connect(m_field, &QLineEdit::textChanged, this, [this](const QString& text) { OnTyped(text); });
    m_field->setClearButtonEnabled(true);
    m_field->installEventFilter(this);
    window.FindControl(QStringLiteral("FileList"))->Widget()->installEventFilter(this);
    m_hideDoubles->AddHandler([this](const Notification& notification) {
        if (notification.type != NotifySelectChanged) {
            return false;
        }
        onHideDoubles(HidesDoubles());
        return true;
    });
    RewriteTexts();
}

void ResultBar::OnTyped(const QString& text)
{
    m_delay.stop();
    if (text.isEmpty()) {
        onFilter(NameFilter());
    } else {
        m_delay.start();
    }
}

bool ResultBar::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress &&
        static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Escape &&
        !m_field->GetText().isEmpty()) {
        ClearFilter();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void ResultBar::SetDoubles(std::size_t count)
{
    m_doubles = count;
    m_hideDoubles->SetEnabled(count > 0);
    WriteTexts();
}

void ResultBar::ShowCounts(std::size_t listed, std::size_t all)
{
    m_listed = listed;
    m_all = all;
    WriteTexts();
}

void ResultBar::WriteTexts()
{
    m_hideDoubles->SetText(ToQt(FormatText(ExtraText("EXT0103"), m_doubles)));
    m_counts->SetText(m_listed == m_all ? QString()
                                        : ToQt(FormatText(ExtraText("EXT0102"), m_listed, m_all)));
}

void ResultBar::RewriteTexts()
{
    const QString hint = ToQt(ExtraText("EXT0101"));
    m_field->SetAttribute(QStringLiteral("placeholder"), hint);
    m_field->SetAttribute(QStringLiteral("accname"), hint);
    WriteTexts();
}
