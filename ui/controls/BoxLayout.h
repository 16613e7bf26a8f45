// Places the children of a layout one after another, by what each asks for.
#pragma once

#include "ui/controls/VisualControl.h"

#include <QLayout>

#include <memory>
#include <vector>

class BoxLayout : public QLayout
{
public:
    BoxLayout(QWidget* owner, Qt::Orientation direction);
    BoxLayout(const BoxLayout&) = delete;
    BoxLayout& operator=(const BoxLayout&) = delete;
    ~BoxLayout() override;

    // Where children that are smaller than the layout stand across its direction.
    void SetCrossAlignment(Qt::Alignment alignment) { m_crossAlignment = alignment; }
    // At the end, or before the child that stands at the index.
    void Put(VisualControl& control, int index);

    void addItem(QLayoutItem* item) override;
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    void setGeometry(const QRect& rect) override;
    QSize sizeHint() const override;
    // Windows have a least size of their own; children never keep one from being made smaller.
    QSize minimumSize() const override { return {0, 0}; }

private:
    struct Item
    {
        std::unique_ptr<QLayoutItem> item;
        VisualControl* control = nullptr;
    };

    bool IsHorizontal() const { return m_direction == Qt::Horizontal; }
    void PlaceRow(const QRect& inside) const;

    Qt::Orientation m_direction;
    Qt::Alignment m_crossAlignment = Qt::AlignLeft | Qt::AlignTop;
    std::vector<Item> m_items;
};
