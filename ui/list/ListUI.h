// A list of rows in columns. "itemselect" comes from the list with the row's index, "itemclick", "list_check_click" and
// "list_item_dbclick" from the row.
//
// Space changes the check mark of the current row, Enter stands for a double click.
#pragma once

#include "ui/list/ItemViewUI.h"
#include "ui/list/ListElementUI.h"
#include "ui/list/ListHeaderUI.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class ListModel;

class CListUI : public CItemViewUI
{
public:
    using Row = CListImageTextElementUI;
    // Below 0 when a stands before b, 0 when they are equal.
    using RowCompare = int (*)(const Row& a, const Row& b, std::intptr_t context);

    explicit CListUI(std::shared_ptr<Skin> skin);
    CListUI(const CListUI&) = delete;
    CListUI& operator=(const CListUI&) = delete;
    ~CListUI() override;
    QString GetClass() const override { return QStringLiteral("ListUI"); }

    int GetCount() const override { return static_cast<int>(m_rows.size()); }
    Row* GetItemAt(int index) const override;
    // -1 for a row of another list.
    int GetItemIndex(const CControlUI* row) const;
    int GetNamedCount() const override { return m_header != nullptr ? 1 : 0; }
    CControlUI* GetNamedAt(int) const override { return m_header; }
    // Null when the markup has none.
    CListHeaderUI* GetHeader() const { return m_header; }
    int GetColumnCount() const;

    // Rows, at the end, and one header.
    bool Add(std::unique_ptr<CControlUI>& child) override;
    // False when it is no row that this list takes.
    virtual bool AddAt(std::unique_ptr<CControlUI>& child, int index);
    // Many at once, at the end.
    void AddRows(std::vector<std::unique_ptr<Row>> rows);
    // In place of all that there are. One of them is selected, none by -1, which is told nobody.
    void ReplaceRows(std::vector<std::unique_ptr<Row>> rows, int selected);
    // Deletes the row. One that was selected leaves nothing selected.
    virtual bool Remove(CControlUI* row);
    virtual bool RemoveAt(int index);
    virtual void RemoveAll();

    // -1 selects nothing. False when there is no such row.
    bool SelectItem(int index);
    // -1 when nothing is selected.
    int GetCurSel() const;
    // Rows that are equal keep their order; the selected row stays selected.
    void SortItems(RowCompare compare, std::intptr_t context);

    // Rows have a check mark in this column, drawn by the two pictures; -1 for none.
    void SetCheckColumn(int column) { m_checkColumn = column; }
    int GetCheckColumn() const { return m_checkColumn; }
    const QString& GetCheckImage(bool isChecked) const
    {
        return isChecked ? m_checkedImage : m_uncheckedImage;
    }
    // Called when the look of a row has changed: another view may show the same rows.
    void SetFollower(std::function<void()> onLook) { m_onLook = std::move(onLook); }
    void Invalidate() override;

    // After its height or visibility has changed; for the row.
    void RefreshRow(const Row& row);

    void DrawCell(QPainter& painter, const QRect& cell, const QModelIndex& index) override;
    int HeightOf(const QModelIndex& index) const override;
    QString CutTextOf(const QRect& cell, const QModelIndex& index) const override;
    QString TipOf(const QModelIndex& index) const override;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    // A click on a span inside a text. True when that was all it meant.
    virtual bool OnRowLink(Row& row, int link);

    // Without what derived lists do beside.
    bool InsertRow(std::unique_ptr<CControlUI>& child, int index);
    bool DeleteRow(int index);
    void DeleteAllRows();

private:
    void Renumber() const;
    void UseHeader(CListHeaderUI& header);
    // The room of a cell's text beside its picture.
    TextStyle CellStyle(const QRect& cell, const QModelIndex& index) const;
    bool PressCell(const QModelIndex& index, const QPoint& place);

    std::vector<std::unique_ptr<Row>> m_rows;
    ListModel* m_model = nullptr;  // of the widget
    CListHeaderUI* m_header = nullptr;
    int m_checkColumn = -1;
    QString m_uncheckedImage;
    QString m_checkedImage;
    mutable bool m_areNumbered = true;
    bool m_isQuiet = false;  // changes of the selection are not told
    Row* m_pressedRow = nullptr;
    std::function<void()> m_onLook;
};
