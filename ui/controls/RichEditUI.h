// A pane that shows text or one picture. It is read, scrolled and copied from, never typed into.
#pragma once

#include "ui/controls/VisualControl.h"

#include <QImage>
#include <QTextEdit>

class CRichEditUI : public WidgetControl<QTextEdit>
{
public:
    explicit CRichEditUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("RichEditUI"); }

    // The plain text that stands there; empty for a picture.
    QString GetText() const override { return toPlainText(); }
    // Empties the pane and shows text in the middle of the line, with room above it of that many pixels.
    void ShowText(const QString& text, int spaceAbove = 0);
    // In letters of one width, from the left: a dump of bytes. Empties the pane first.
    void ShowFixedText(const QString& text);
    // Empties the pane and shows the picture, at most as large as told, or, for -1, as the pane has room for. It is never made
    // larger than it is. False, and the pane stays empty, when there is no picture in the image: it could not be decoded.
    bool InsertPicture(const QImage& picture, int width = -1, int height = -1);
    // Decodes the file here and now, scaled down while reading. For files that the program itself has made.
    bool InsertPictureFile(const QString& path, int width = -1, int height = -1);
    bool HasPicture() const { return !m_picture.isNull(); }
    void Clear();

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void OnTextChanged() override;
    void OnLookChanged() override;

private:
    void PutPicture();

    QImage m_picture;
    QSize m_pictureBounds;  // -1 for the pane's
};
