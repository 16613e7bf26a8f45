// Controls that show something and are not worked with, but for the spans of a text.
#pragma once

#include "ui/controls/VisualControl.h"

#include <QLabel>
#include <QProgressBar>
#include <QWidget>

// An empty area, a line or a picture.
class CPlainControlUI : public WidgetControl<QWidget>
{
public:
    using WidgetControl::WidgetControl;
    QString GetClass() const override { return QStringLiteral("ControlUI"); }

protected:
    void paintEvent(QPaintEvent* event) override;
};

// A click on a span, or Enter while a span is marked, sends "click" with the span's number. Tab stops at a text with spans;
// the arrows go from one to the next.
class CLabelUI : public WidgetControl<QLabel>
{
public:
    explicit CLabelUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("LabelUI"); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void OnTextChanged() override;

private:
    int SpanAt(const QPoint& place) const;

    int m_spanCount = 0;
    int m_markedSpan = 0;
    int m_pressedSpan = -1;
};

class CTextUI : public CLabelUI
{
public:
    using CLabelUI::CLabelUI;
    QString GetClass() const override { return QStringLiteral("TextUI"); }
};

// A bar: the fore picture or colour up to the value, the ground behind it, the text above.
class CProgressUI : public WidgetControl<QProgressBar>
{
public:
    explicit CProgressUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("ProgressUI"); }

    int GetValue() const { return value(); }
    // Kept within its bounds.
    void SetValue(int value);

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_barColor;
};
