// A line at the lower edge of a window: something takes its time, and a button gives it up.
#pragma once

#include <QFrame>
#include <QString>

#include <functional>
#include <memory>

class Skin;

class COpeningWait : public QFrame
{
public:
    COpeningWait(QWidget& window,
                 const std::shared_ptr<Skin>& skin,
                 const QString& text,
                 const QString& buttonText,
                 std::function<void()> onGiveUp);
};
