// A field of one line. What stands in it while it is empty has the colour of disabled texts.
#pragma once

#include "ui/controls/VisualControl.h"

#include <QLineEdit>

class CEditUI : public WidgetControl<QLineEdit>
{
public:
    explicit CEditUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("EditUI"); }

    // What stands in the field, as the user left it.
    QString GetText() const override { return text(); }

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;
    void OnTextChanged() override;
    void OnLookChanged() override;
};
