#include "ui/controls/EditUI.h"

#include <QPainter>

#include <utility>

CEditUI::CEditUI(std::shared_ptr<Skin> skin) : WidgetControl<QLineEdit>(std::move(skin))
{
    setFrame(false);
    CEditUI::OnLookChanged();
}

void CEditUI::OnTextChanged()
{
    const QString plain = PlainText(VisualControl::GetText(), false);
    if (text() != plain) {
        setText(plain);
    }
    // The field's content is read out as its value, not as its name.
    setAccessibleName(GetAttribute(QStringLiteral("accname")));
}

void CEditUI::OnLookChanged()
{
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, m_look.textColor);
    colors.setColor(QPalette::PlaceholderText, m_look.disabledTextColor);
    setPalette(colors);
    setFont(GetSkin()->Font(m_look.font));
    setTextMargins(m_look.textPadding);
    setAlignment(m_look.alignment);
}

bool CEditUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CEditUI>, 5> Table = {{
        {"readonly",
         [](CEditUI& edit, const QString& text) { edit.setReadOnly(ParseTruth(text)); }},
        {"password",
         [](CEditUI& edit, const QString& text) {
             edit.setEchoMode(ParseTruth(text) ? QLineEdit::Password : QLineEdit::Normal);
         }},
        {"maxchar", [](CEditUI& edit,
                       const QString& text) { edit.setMaxLength(std::max(ParseNumber(text), 0)); }},
        {"placeholder", [](CEditUI& edit, const QString& text) { edit.setPlaceholderText(text); }},
        {"accname", [](CEditUI& edit, const QString& text) { edit.setAccessibleName(text); }},
    }};
    return SetFromTable(Table, *this, name, value) || VisualControl::ReadAttribute(name, value);
}

void CEditUI::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        DrawGround(painter, rect());
    }
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    DrawFocus(painter, rect());
}
