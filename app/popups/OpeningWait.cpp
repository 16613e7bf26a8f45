#include "app/popups/OpeningWait.h"

#include "ui/controls/ButtonUI.h"
#include "ui/controls/LabelUI.h"

#include <QHBoxLayout>

#include <utility>

namespace {

constexpr int Height = 54;
constexpr int Margin = 16;

}  // namespace

COpeningWait::COpeningWait(QWidget& window,
                           const std::shared_ptr<Skin>& skin,
                           const QString& text,
                           const QString& buttonText,
                           std::function<void()> onGiveUp)
    : QFrame(&window)
{
    setObjectName(QStringLiteral("openingwait"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(Margin, 0, Margin, 0);
    auto* const label = new CTextUI(skin);
    row->addWidget(label, 1);
    label->SetText(text);
    auto* const button = new CButtonUI(skin);
    row->addWidget(button);
    button->SetName(QStringLiteral("openingcancelbtn"));
    button->ApplyStyle(QStringLiteral("BtnPlain"));
    button->SetText(buttonText);
    button->setFixedSize(button->ContentSize().expandedTo(QSize(96, 34)));
    // The window below has a button of that kind too, and is not to hear of this one.
    button->AddHandler([give = std::move(onGiveUp)](const Notification& notification) {
        if (notification.type == NotifyClick) {
            give();
        }
        return true;
    });
    setGeometry(0, window.height() - Height, window.width(), Height);
    raise();
    show();
    button->setFocus();
}
