// A stretch of something as a row of cells, each in the colour of its state. Its text is its cells, a letter each:
//   ? nothing is known   1 to 8 read in part   + read   F read, and something was found there
//   * / not fully tried  - cannot be read      ! the same, and something was found there
// Other letters stand for ?.
#pragma once

#include "ui/controls/VisualControl.h"

#include <QWidget>

class CStripUI : public WidgetControl<QWidget>
{
public:
    using WidgetControl::WidgetControl;
    QString GetClass() const override { return QStringLiteral("StripUI"); }
    // The cells are no text that is read out or could be cut.
    QString GetText() const override { return {}; }
    void SetText(const QString& text) override;
    const QString& Cells() const { return m_cells; }

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void DrawCell(QPainter& painter, const QRect& area, QChar letter) const;

    QString m_cells;
    QColor m_readColor;
    QColor m_foundColor;
    QColor m_triedColor;
    QColor m_badColor;
};
