#include "ui/controls/ComboUI.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace {

constexpr int WidestList = 640;
constexpr int ListFrame = 40;

}  // namespace

CComboUI::CComboUI(std::shared_ptr<Skin> skin) : WidgetControl<QComboBox>(std::move(skin))
{
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    connect(this, &QComboBox::activated, this, [this](int index) { Choose(index); });
    connect(this, &QComboBox::currentTextChanged, this,
            [this](const QString& text) { SetText(text); });
    CComboUI::OnLookChanged();
}

void CComboUI::SetTexts(const QStringList& texts, int chosen)
{
    clear();
    addItems(texts);
    setCurrentIndex(chosen);
    m_chosen = chosen;
    SetText(currentText());
}

void CComboUI::Choose(int index)
{
    setCurrentIndex(index);
    if (std::exchange(m_chosen, index) != index) {
        SendNotify(NotifyItemSelect, index);
    }
}

void CComboUI::OnLookChanged()
{
    setFont(GetSkin()->Font(m_look.font));
    QPalette colors = palette();
    colors.setColor(QPalette::Base, m_look.backColor);
    colors.setColor(QPalette::Window, m_look.backColor);
    colors.setColor(QPalette::Text, m_look.textColor);
    colors.setColor(QPalette::Highlight, m_look.selectedBackColor);
    colors.setColor(QPalette::HighlightedText, m_look.textColor);
    // The list is a window of its own, some styles draw it as a menu.
    view()->setPalette(colors);
    view()->window()->setPalette(colors);
}

void CComboUI::showPopup()
{
    view()->setMinimumWidth(std::min(view()->sizeHintForColumn(0) + ListFrame, WidestList));
    QComboBox::showPopup();
}

void CComboUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    DrawGround(painter, rect());
    DrawText(painter, rect());
    DrawFocus(painter, rect());
}

void CComboUI::wheelEvent(QWheelEvent* event)
{
    event->ignore();
}

void CComboUI::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Space:
    case Qt::Key_F4:
        showPopup();
        break;
    default:
        event->ignore();
    }
}
