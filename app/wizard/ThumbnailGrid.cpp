#include "app/wizard/ThumbnailGrid.h"

#include "app/decoding/PictureDecoder.h"
#include "app/wizard/FileList.h"
#include "app/wizard/MainTexts.h"
#include "ui/list/TreeNodeUI.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int BytesAKilobyte = 1024;
constexpr int MostKilobytesOfOne = ThumbnailSide * ThumbnailSide * 3 / BytesAKilobyte;
constexpr int LeastShown = 16;
// In which the user may scroll on.
constexpr int RestMilliseconds = 80;

// Two screens of them: with less than one they would drive each other out for ever.
int KilobytesFor(std::size_t shownRows)
{
    return 2 * std::max(static_cast<int>(shownRows), LeastShown) * MostKilobytesOfOne;
}

// In three bytes a pixel: nothing shows through.
QImage OnGround(const QImage& picture, const QColor& ground)
{
    if (picture.isNull()) {
        return {};
    }
    QImage opaque(picture.size(), QImage::Format_RGB888);
    opaque.fill(ground);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque;
}

int KilobytesOf(const QImage& picture)
{
    return static_cast<int>(picture.sizeInBytes() / BytesAKilobyte) + 1;
}

}  // namespace

ThumbnailGrid::ThumbnailGrid(MainContext& context)
    : m_context(context),
      m_list(context.window.FindControlAs<CListUI>(QStringLiteral("FileList"))),
      m_grid(context.window.FindControlAs<CGridUI>(QStringLiteral("FileGrid"))),
      m_switch(context.window.FindControlAs<COptionUI>(QStringLiteral("OptGrid"))),
      m_maker(context.state.turns, [this](const ThumbnailMaker::Wish& wish, const QImage& picture) {
          QMetaObject::invokeMethod(
              this, [this, wish, picture] { Keep(wish, picture); }, Qt::QueuedConnection);
      })
{
    m_grid->ShowRowsOf(*m_list);
    m_grid->picture = [this](const CListUI::Row& row) { return PictureOf(row); };
    m_grid->onDrawn = [this] {
        if (!m_delay.isActive()) {
            m_delay.start(RestMilliseconds);
        }
    };
    m_delay.setSingleShot(true);
    connect(&m_delay, &QTimer::timeout, this, [this] { WantShown(); });
    RewriteTexts();
    Refresh();
}

void ThumbnailGrid::RewriteTexts()
{
    m_switch->SetAttribute(QStringLiteral("tooltip"), ToQt(ExtraText("EXT0301")));
}

bool ThumbnailGrid::IsOfPhotos() const
{
    const auto* const node = PointerOf<const CTreeNodeUI>(m_list->GetTag());
    const CTreeNodeUI* const category = node != nullptr ? node->GetParentNode() : nullptr;
    return category != nullptr && category->GetName() == QLatin1String("NodePhoto");
}

void ThumbnailGrid::Refresh()
{
    const bool isOfPhotos = IsOfPhotos();
    const bool isGrid = isOfPhotos && m_switch->IsSelected();
    m_switch->SetVisible(isOfPhotos);
    if (isGrid == m_grid->IsVisible()) {
        return;
    }
    const bool hadFocus = m_list->hasFocus() || m_grid->hasFocus();
    m_list->SetVisible(!isGrid);
    m_grid->SetVisible(isGrid);
    if (isGrid) {
        m_grid->scrollTo(m_grid->currentIndex());
    } else {
        m_list->scrollTo(m_list->currentIndex());
        m_maker.Want({});
    }
    if (hadFocus) {
        (isGrid ? m_grid->Widget() : m_list->Widget())->setFocus();
    }
}

void ThumbnailGrid::Forget()
{
    ++m_results;
    m_maker.Want({});
    m_pictures.clear();
}

const QImage* ThumbnailGrid::PictureOf(const CListUI::Row& row)
{
    const QImage* const kept = m_pictures.object(KeyOf(static_cast<const FileRow&>(row).Found()));
    return kept == nullptr || kept->isNull() ? nullptr : kept;
}

void ThumbnailGrid::WantShown()
{
    std::vector<ThumbnailMaker::Wish> wishes;
    const std::vector<CListUI::Row*> shown = m_grid->ShownRows();
    m_pictures.setMaxCost(KilobytesFor(shown.size()));
    for (const CListUI::Row* row : shown) {
        const FoundRow& found = static_cast<const FileRow*>(row)->Found();
        const SelectionKey key = KeyOf(found);
        if (found.record.IsFolder == 0 && !m_pictures.contains(key)) {
            wishes.push_back(
                {key, found.record, m_context.state.FindEngine(found.record), m_results});
        }
    }
    m_maker.Want(std::move(wishes));
}

void ThumbnailGrid::Keep(const ThumbnailMaker::Wish& wish, const QImage& picture)
{
    if (wish.results == m_results) {
        const QImage kept = OnGround(picture, m_grid->Look().backColor);
        m_pictures.insert(wish.key, new QImage(kept), KilobytesOf(kept));
        m_grid->Invalidate();
    }
}
