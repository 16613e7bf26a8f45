// The part that all controls with a widget of their own share: place, colours, pictures, text and how they are drawn.
#pragma once

#include "ui/controls/ControlUI.h"
#include "ui/markup/Skin.h"

#include <QEvent>
#include <QMargins>
#include <QRect>

#include <memory>
#include <optional>
#include <utility>

// What a layout asks of a child. A length of -1 shares what is left, -2 is that of the content.
struct ControlPlace
{
    static constexpr int Shared = -1;
    static constexpr int OfContent = -2;

    int width = Shared;
    int height = Shared;
    int share = 1;  // of what is left, against those of the others
    QSize minimum = {0, 0};
    QSize maximum = {1 << 20, 1 << 20};
    QMargins padding;           // outside of the control
    std::optional<QRect> free;  // lies there, out of the row of the others
};

struct ControlLook
{
    QColor backColor;
    QColor hotBackColor;
    QColor selectedBackColor;
    QColor borderColor;
    int borderSize = 0;
    QString backImage;
    QString foreImage;
    int font = -1;
    QColor textColor = Qt::black;
    QColor hotTextColor;
    QColor selectedTextColor;
    QColor disabledTextColor = {0xA0, 0xA0, 0xA0};
    QMargins textPadding;
    Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter;
    bool hasMarkup = false;
    bool wraps = false;
};

// False for an attribute that is none of a look.
bool SetLookAttribute(ControlLook& look, const QString& name, const QString& value);

// The text as a tool tip takes it: shown as it stands, line by line, whatever signs it has.
QString PlainToolTip(const QString& text);
// At a place of the screen.
void ShowPlainToolTip(const QPoint& place, const QString& text, QWidget& widget);

class VisualControl : public CControlUI
{
public:
    explicit VisualControl(std::shared_ptr<Skin> skin);

    void SetName(const QString& name) override;
    QString GetText() const override { return m_text; }
    void SetText(const QString& text) override;
    void SetVisible(bool isVisible) override;
    void SetEnabled(bool isEnabled) override;
    void Invalidate() override;
    CControlUI* GetParent() const override;
    const Skin* GetSkin() const override { return m_skin.get(); }
    const std::shared_ptr<Skin>& SharedSkin() const { return m_skin; }

    const ControlPlace& Place() const { return m_place; }
    ControlPlace& ChangePlace();
    const ControlLook& Look() const { return m_look; }
    // Room for the text and what is around it.
    virtual QSize ContentSize() const;
    // Where the text goes as the control lies now, and whether it has less room than it needs.
    TextLayout PlacedText() const;
    // Of the text in the state that the control is in.
    QColor TextColor() const;
    // A page that is not shown stays hidden whatever its own state is.
    void SetSuppressed(bool isSuppressed);

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;

    // What the mouse and keys do to every control; true when that was all.
    bool HandleWidgetEvent(QEvent& event);
    // Colours and pictures below the text, then the border.
    void DrawGround(QPainter& painter, const QRect& area) const;
    void DrawText(QPainter& painter, const QRect& area);
    void DrawFocus(QPainter& painter, const QRect& area) const;
    virtual bool IsSelectedLook() const { return false; }
    virtual QString StateImage() const { return {}; }
    virtual bool IsHot() const;
    TextStyle StyleIn(const QRect& area) const;
    // For controls whose widget writes the text itself.
    virtual void OnTextChanged() {}
    virtual void OnLookChanged() {}
    const std::vector<TextRun>& Runs() const { return m_runs; }

    ControlLook m_look;

private:
    static bool
    SetPlaceAttribute(VisualControl& control, const QString& name, const QString& value);
    static bool SetTextAttribute(VisualControl& control, const QString& name, const QString& value);
    void RefreshText();
    void RefreshVisible();

    std::shared_ptr<Skin> m_skin;
    ControlPlace m_place;
    QString m_text;
    QString m_accessibleName;
    std::vector<TextRun> m_runs;
    bool m_isCut = false;  // the text as it was last drawn
    bool m_isSuppressed = false;
    bool m_hasMenu = false;
};

// Joins it with a widget of Qt.
template <typename Base>
class WidgetControl : public Base, public VisualControl
{
public:
    template <typename... Arguments>
    explicit WidgetControl(std::shared_ptr<Skin> skin, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), VisualControl(std::move(skin))
    {
        // Drawn anew when the mouse comes and goes.
        Base::setAttribute(Qt::WA_Hover);
    }

    QWidget* Widget() const override { return const_cast<WidgetControl*>(this); }

protected:
    bool event(QEvent* event) override { return HandleWidgetEvent(*event) || Base::event(event); }
};
