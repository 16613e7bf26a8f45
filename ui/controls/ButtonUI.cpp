#include "ui/controls/ButtonUI.h"

#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

const QString& StateImages::Of(bool isEnabled, bool isHot, bool isPushed, bool isSelected) const
{
    const auto orNormal = [this](const QString& image) -> const QString& {
        return image.isEmpty() ? normal : image;
    };
    if (!isEnabled) {
        return orNormal(disabled);
    }
    if (isSelected) {
        return isHot && !selectedHot.isEmpty() ? selectedHot : orNormal(selected);
    }
    if (isPushed) {
        return orNormal(pushed.isEmpty() ? hot : pushed);
    }
    return isHot ? orNormal(hot) : normal;
}

bool StateImages::Set(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<StateImages>, 6> Table = {{
        {"normalimage", [](StateImages& images, const QString& text) { images.normal = text; }},
        {"hotimage", [](StateImages& images, const QString& text) { images.hot = text; }},
        {"pushedimage", [](StateImages& images, const QString& text) { images.pushed = text; }},
        {"disabledimage", [](StateImages& images, const QString& text) { images.disabled = text; }},
        {"selectedimage", [](StateImages& images, const QString& text) { images.selected = text; }},
        {"selectedhotimage",
         [](StateImages& images, const QString& text) { images.selectedHot = text; }},
    }};
    return SetFromTable(Table, *this, name, value);
}

CButtonUI::CButtonUI(std::shared_ptr<Skin> skin) : WidgetControl<QPushButton>(std::move(skin))
{
    m_look.alignment = Qt::AlignCenter;
    setFocusPolicy(Qt::TabFocus);
    connect(this, &QPushButton::clicked, this, [this] { SendNotify(NotifyClick); });
}

bool CButtonUI::ReadAttribute(const QString& name, const QString& value)
{
    if (m_images.Set(name, value)) {
        update();
        return true;
    }
    return VisualControl::ReadAttribute(name, value);
}

QString CButtonUI::StateImage() const
{
    return m_images.Of(isEnabled(), IsHot(), isDown(), false);
}

void CButtonUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    DrawGround(painter, rect());
    DrawText(painter, isDown() ? rect().translated(0, 1) : rect());
    DrawFocus(painter, rect());
}

COptionUI::COptionUI(std::shared_ptr<Skin> skin) : WidgetControl<QCheckBox>(std::move(skin))
{
    setFocusPolicy(Qt::TabFocus);
}

void COptionUI::Selected(bool isSelected)
{
    if (isSelected == isChecked()) {
        return;
    }
    setChecked(isSelected);
    if (m_group.isEmpty()) {
        SendNotify(NotifySelectChanged);
        return;
    }
    if (isSelected) {
        for (COptionUI* other : OthersOfGroup()) {
            other->setChecked(false);
        }
        SendNotify(NotifySelectChanged);
    }
}

std::vector<COptionUI*> COptionUI::OthersOfGroup() const
{
    std::vector<COptionUI*> others;
    for (QCheckBox* box : window()->findChildren<QCheckBox*>()) {
        auto* option = dynamic_cast<COptionUI*>(box);
        if (option != nullptr && option != this && option->m_group == m_group) {
            others.push_back(option);
        }
    }
    return others;
}

void COptionUI::nextCheckState()
{
    if (m_group.isEmpty() || !isChecked()) {
        Selected(!isChecked());
    }
}

void COptionUI::ChooseNeighbour(bool isForward)
{
    // In the order of the markup, which is the order of the tab key too.
    std::vector<COptionUI*> members = {this};
    for (QWidget* widget = nextInFocusChain(); widget != nullptr && widget != this;
         widget = widget->nextInFocusChain()) {
        auto* option = dynamic_cast<COptionUI*>(widget);
        if (option != nullptr && option->window() == window() && option->m_group == m_group &&
            option->isEnabled() && !option->isHidden()) {
            members.push_back(option);
        }
    }
    COptionUI* neighbour = isForward && members.size() > 1 ? members[1] : members.back();
    neighbour->setFocus(Qt::TabFocusReason);
    neighbour->Selected(true);
}

void COptionUI::keyPressEvent(QKeyEvent* event)
{
    const bool isForward = event->key() == Qt::Key_Right || event->key() == Qt::Key_Down;
    const bool isBack = event->key() == Qt::Key_Left || event->key() == Qt::Key_Up;
    if (!m_group.isEmpty() && (isForward || isBack)) {
        ChooseNeighbour(isForward);
        return;
    }
    QCheckBox::keyPressEvent(event);
}

bool COptionUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<COptionUI>, 2> Table = {{
        {"group", [](COptionUI& option, const QString& text) { option.SetGroup(text); }},
        // How it begins is no change, and nothing is sent.
        {"selected",
         [](COptionUI& option, const QString& text) { option.setChecked(ParseTruth(text)); }},
    }};
    if (m_images.Set(name, value)) {
        update();
        return true;
    }
    return SetFromTable(Table, *this, name, value) || VisualControl::ReadAttribute(name, value);
}

QString COptionUI::StateImage() const
{
    return m_images.Of(isEnabled(), IsHot(), isDown(), isChecked());
}

void COptionUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    DrawGround(painter, rect());
    DrawText(painter, rect());
    DrawFocus(painter, rect());
}
