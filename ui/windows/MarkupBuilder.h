// Makes a window's controls from a markup file. The one table of plain elements stands in PlainElements.cpp; other elements
// come from the window.
#pragma once

#include "ui/controls/ControlUI.h"
#include "ui/markup/Skin.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

struct WindowSettings
{
    QSize size = {0, 0};
    QSize minimum = {0, 0};
    int captionHeight = 0;  // the window is moved by what lies that far below its upper edge
    int sizeBorder = 0;     // and resized by what lies that near to any edge
    QString title;
};

// Null for an element that it does not know.
using ControlMaker =
    std::function<std::unique_ptr<CControlUI>(const QString& element, std::shared_ptr<Skin> skin)>;

// Layouts, plain controls, lists and nodes.
std::unique_ptr<CControlUI> MakePlainControl(const QString& element,
                                             const std::shared_ptr<Skin>& skin);

class MarkupBuilder
{
public:
    MarkupBuilder(std::shared_ptr<Skin> skin, ControlMaker others);

    // Puts the controls of the file into root; attributes of the window that it does not know itself go to root. False when the
    // file is missing, is no XML or exceeds a bound; root may hold some controls then.
    bool Build(const QString& file, CControlUI& root);
    const WindowSettings& Settings() const { return m_settings; }
    // What was left out: elements, attributes, styles and files that are not known. A skin in order has none.
    const QStringList& Problems() const { return m_problems; }

private:
    class Run;

    std::shared_ptr<Skin> m_skin;
    ControlMaker m_others;
    WindowSettings m_settings;
    QStringList m_problems;
};
