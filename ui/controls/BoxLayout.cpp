#include "ui/controls/BoxLayout.h"

#include "ui/controls/SpanDivider.h"

#include <QWidget>

#include <algorithm>

namespace {

// One direction of what a control asks for.
SpanPart PartOf(const VisualControl& control, bool isHorizontal)
{
    const ControlPlace& place = control.Place();
    SpanPart part;
    part.fixed = isHorizontal ? place.width : place.height;
    if (part.fixed == ControlPlace::OfContent) {
        const QSize content = control.ContentSize();
        part.fixed = isHorizontal ? content.width() : content.height();
    }
    part.minimum = isHorizontal ? place.minimum.width() : place.minimum.height();
    part.maximum = isHorizontal ? place.maximum.width() : place.maximum.height();
    if (part.fixed >= 0) {
        part.fixed = std::clamp(part.fixed, part.minimum, std::max(part.minimum, part.maximum));
    }
    part.share = place.share;
    part.before = isHorizontal ? place.padding.left() : place.padding.top();
    part.behind = isHorizontal ? place.padding.right() : place.padding.bottom();
    return part;
}

// Across the direction: the whole width, or the own one at the side told.
Span PlaceAcross(const SpanPart& part, int start, int total, Qt::Alignment alignment)
{
    const Span whole = DivideSpan({part}, start, total, 0).front();
    const int room = start + total - part.behind - whole.start - whole.length;
    if (room <= 0) {
        return whole;
    }
    if (alignment & (Qt::AlignHCenter | Qt::AlignVCenter)) {
        return {whole.start + room / 2, whole.length};
    }
    return alignment & (Qt::AlignRight | Qt::AlignBottom) ? Span{whole.start + room, whole.length}
                                                          : whole;
}

}  // namespace

BoxLayout::BoxLayout(QWidget* owner, Qt::Orientation direction)
    : QLayout(owner), m_direction(direction)
{
    setContentsMargins(0, 0, 0, 0);
    setSpacing(0);
    setSizeConstraint(QLayout::SetNoConstraint);
}

BoxLayout::~BoxLayout() = default;

void BoxLayout::Put(VisualControl& control, int index)
{
    QWidget* widget = control.Widget();
    addChildWidget(widget);
    Item item = {std::make_unique<QWidgetItem>(widget), &control};
    const bool isInside = index >= 0 && index < count();
    m_items.insert(isInside ? m_items.begin() + index : m_items.end(), std::move(item));
    control.SetVisible(control.IsVisible());
    if (control.Place().free) {
        widget->raise();
    }
    invalidate();
}

void BoxLayout::addItem(QLayoutItem* item)
{
    m_items.push_back(
        {std::unique_ptr<QLayoutItem>(item), dynamic_cast<VisualControl*>(item->widget())});
}

QLayoutItem* BoxLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)].item.get()
                                         : nullptr;
}

QLayoutItem* BoxLayout::takeAt(int index)
{
    if (index < 0 || index >= count()) {
        return nullptr;
    }
    QLayoutItem* item = m_items[static_cast<std::size_t>(index)].item.release();
    m_items.erase(m_items.begin() + index);
    invalidate();
    return item;
}

void BoxLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    PlaceRow(contentsRect());
    for (const Item& item : m_items) {
        if (item.control != nullptr && item.control->Place().free) {
            item.control->Widget()->setGeometry(
                item.control->Place().free->translated(rect.topLeft()));
        }
    }
}

void BoxLayout::PlaceRow(const QRect& inside) const
{
    std::vector<const VisualControl*> controls;
    std::vector<SpanPart> parts;
    for (const Item& item : m_items) {
        if (item.control != nullptr && !item.item->isEmpty() && !item.control->Place().free) {
            controls.push_back(item.control);
            parts.push_back(PartOf(*item.control, IsHorizontal()));
        }
    }
    const int start = IsHorizontal() ? inside.left() : inside.top();
    const int total = IsHorizontal() ? inside.width() : inside.height();
    const std::vector<Span> spans = DivideSpan(parts, start, total, spacing());
    const Qt::Alignment across =
        m_crossAlignment & (IsHorizontal() ? Qt::AlignVertical_Mask : Qt::AlignHorizontal_Mask);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const SpanPart part = PartOf(*controls[i], !IsHorizontal());
        const Span along = spans[i];
        if (IsHorizontal()) {
            const Span down = PlaceAcross(part, inside.top(), inside.height(), across);
            controls[i]->Widget()->setGeometry(along.start, down.start, along.length, down.length);
        } else {
            const Span right = PlaceAcross(part, inside.left(), inside.width(), across);
            controls[i]->Widget()->setGeometry(right.start, along.start, right.length,
                                               along.length);
        }
    }
}

QSize BoxLayout::sizeHint() const
{
    int along = 0;
    int across = 0;
    int shown = 0;
    for (const Item& item : m_items) {
        if (item.control == nullptr || item.item->isEmpty() || item.control->Place().free) {
            continue;
        }
        const auto length = [&item](bool isHorizontal) {
            const SpanPart part = PartOf(*item.control, isHorizontal);
            const QSize content = item.control->ContentSize();
            const int own =
                part.fixed >= 0 ? part.fixed : (isHorizontal ? content.width() : content.height());
            return own + part.before + part.behind;
        };
        along += length(IsHorizontal());
        across = std::max(across, length(!IsHorizontal()));
        ++shown;
    }
    along += spacing() * std::max(shown - 1, 0);
    return (IsHorizontal() ? QSize(along, across) : QSize(across, along))
        .grownBy(contentsMargins());
}
