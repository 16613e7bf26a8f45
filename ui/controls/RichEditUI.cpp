#include "ui/controls/RichEditUI.h"

#include <QFontDatabase>
#include <QImageReader>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>

#include <utility>

namespace {

constexpr int MaxPictureSide = 4096;
constexpr int MaxPictureMegabytes = 256;
constexpr int PaneMargin = 4;

// Read at the size that is needed: a photograph takes hundreds of megabytes at its own.
QImage ReadPicture(const QString& path)
{
    QImageReader reader(path);
    // The name of a file that was recovered says nothing about what is in it.
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    QImageReader::setAllocationLimit(MaxPictureMegabytes);
    const QSize size = reader.size();
    if (size.width() > MaxPictureSide || size.height() > MaxPictureSide) {
        reader.setScaledSize(size.scaled(MaxPictureSide, MaxPictureSide, Qt::KeepAspectRatio));
    }
    return reader.read();
}

}  // namespace

CRichEditUI::CRichEditUI(std::shared_ptr<Skin> skin) : WidgetControl<QTextEdit>(std::move(skin))
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setFrameShape(QFrame::NoFrame);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    CRichEditUI::OnLookChanged();
}

void CRichEditUI::OnLookChanged()
{
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, m_look.textColor);
    setPalette(colors);
    setFont(GetSkin()->Font(m_look.font));
}

void CRichEditUI::OnTextChanged()
{
    Clear();
    setPlainText(PlainText(VisualControl::GetText(), false));
    setAccessibleName(GetAttribute(QStringLiteral("accname")));
}

void CRichEditUI::Clear()
{
    m_picture = {};
    clear();
    // What was shown before has left its format behind.
    setCurrentCharFormat({});
    textCursor().setBlockFormat({});
}

void CRichEditUI::ShowText(const QString& text, int spaceAbove)
{
    Clear();
    QTextBlockFormat format;
    format.setAlignment(Qt::AlignHCenter);
    format.setTopMargin(spaceAbove);
    QTextCursor cursor = textCursor();
    cursor.setBlockFormat(format);
    cursor.insertText(text);
    moveCursor(QTextCursor::Start);
}

void CRichEditUI::ShowFixedText(const QString& text)
{
    Clear();
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(GetSkin()->Font(m_look.font).pixelSize());
    QTextCharFormat format;
    format.setFont(font);
    textCursor().insertText(text, format);
    moveCursor(QTextCursor::Start);
}

bool CRichEditUI::InsertPicture(const QImage& picture, int width, int height)
{
    Clear();
    m_picture = picture;
    m_pictureBounds = {width, height};
    PutPicture();
    return HasPicture();
}

bool CRichEditUI::InsertPictureFile(const QString& path, int width, int height)
{
    return InsertPicture(ReadPicture(path), width, height);
}

void CRichEditUI::PutPicture()
{
    if (m_picture.isNull()) {
        return;
    }
    clear();
    QSize bounds(m_pictureBounds.width() < 0 ? viewport()->width() - 4 * PaneMargin
                                             : m_pictureBounds.width(),
                 m_pictureBounds.height() < 0 ? viewport()->height() - 4 * PaneMargin
                                              : m_pictureBounds.height());
    bounds = bounds.expandedTo(QSize(16, 16));
    const bool fits = m_picture.width() <= bounds.width() && m_picture.height() <= bounds.height();
    const QImage shown =
        fits ? m_picture : m_picture.scaled(bounds, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QTextBlockFormat format;
    format.setAlignment(Qt::AlignHCenter);
    QTextCursor cursor = textCursor();
    cursor.setBlockFormat(format);
    cursor.insertImage(shown);
}

bool CRichEditUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CRichEditUI>, 2> Table = {{
        // All of them are; the markup may say so.
        {"readonly", [](CRichEditUI&, const QString&) {}},
        {"accname", [](CRichEditUI& pane, const QString& text) { pane.setAccessibleName(text); }},
    }};
    return SetFromTable(Table, *this, name, value) || VisualControl::ReadAttribute(name, value);
}

void CRichEditUI::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(viewport());
        DrawGround(painter, viewport()->rect());
    }
    QTextEdit::paintEvent(event);
    QPainter painter(viewport());
    DrawFocus(painter, viewport()->rect());
}

void CRichEditUI::resizeEvent(QResizeEvent* event)
{
    QTextEdit::resizeEvent(event);
    PutPicture();
}
