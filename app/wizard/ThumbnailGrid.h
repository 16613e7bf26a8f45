// Photos as a grid of small pictures in place of the list on page 3, which goes on below: rows, order, ticks and the current row
// are the list's. A switch above it turns it on. Pictures are made of what is on the screen alone.
#pragma once

#include "app/preview/ThumbnailMaker.h"
#include "app/wizard/MainContext.h"
#include "ui/controls/ButtonUI.h"
#include "ui/list/GridUI.h"

#include <QCache>
#include <QObject>
#include <QTimer>

// User-interface thread.
class ThumbnailGrid : public QObject
{
public:
    // The window's controls are there.
    explicit ThumbnailGrid(MainContext& context);

    // The list shows another type, or the switch was turned.
    void Refresh();
    // Other results are about to come.
    void Forget();
    void RewriteTexts();

private:
    bool IsOfPhotos() const;
    const QImage* PictureOf(const CListUI::Row& row);
    void WantShown();
    void Keep(const ThumbnailMaker::Wish& wish, const QImage& picture);

    MainContext& m_context;
    CListUI* m_list;
    CGridUI* m_grid;
    COptionUI* m_switch;
    QCache<SelectionKey, QImage> m_pictures;  // null for a file that has none
    int m_results = 0;                        // counts searches: a picture may come late
    QTimer m_delay;
    ThumbnailMaker m_maker;  // the first to go
};
