// One row of a list: texts and pictures by column, and a check mark. A plain object; the list draws it.
#pragma once

#include "ui/controls/ControlUI.h"

#include <QString>

#include <memory>
#include <vector>

class CListUI;

class CListImageTextElementUI : public CControlUI
{
public:
    CListImageTextElementUI() = default;
    QString GetClass() const override { return QStringLiteral("ListImageTextElementUI"); }

    // The text of a column. A row that computes its texts when they are needed overrides it.
    virtual QString GetColumnText(int column) const;
    void SetColumnText(int column, const QString& text);
    // The picture of a column, empty for none.
    virtual QString GetColumnImage(int column) const;
    void SetColumnImage(int column, const QString& imageText);
    // A picture over that of a column, in the same place; empty for none.
    virtual QString GetColumnBadge(int) const { return {}; }
    // Lines about the row, as they stand, for when the mouse rests on it. Without them a text that is cut is shown whole.
    virtual QString GetToolTip() const { return {}; }
    // Those of column 0.
    QString GetText() const override { return GetColumnText(0); }
    void SetText(const QString& text) override { SetColumnText(0, text); }

    bool IsChecked() const { return m_isChecked; }
    // Sends nothing.
    void SetChecked(bool isChecked);
    // As a click on the mark: changes it and sends "list_check_click".
    void ToggleCheck();

    // 0 for that of the list.
    int GetHeight() const { return m_height; }
    void SetVisible(bool isVisible) override;
    void SetEnabled(bool isEnabled) override;
    void Invalidate() override;
    CControlUI* GetParent() const override;
    const Skin* GetSkin() const override;
    // Null while it is in none.
    CListUI* GetList() const { return m_list; }

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;

private:
    friend class CListUI;

    struct ColumnImage
    {
        int column = 0;
        QString imageText;
    };
    struct Columns
    {
        std::vector<QString> texts;
        std::vector<ColumnImage> images;
    };

    Columns& OwnColumns();

    CListUI* m_list = nullptr;
    int m_index = -1;                    // where the list last counted it
    std::unique_ptr<Columns> m_columns;  // null in a row that computes what it shows
    int m_height = 0;
    bool m_isChecked = false;
};
