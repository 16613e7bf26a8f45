// Shows the selected file beside the list: fetched by a window of its own, then drawn in the pane or played.
#pragma once

#include "app/preview/PreviewWnd.h"
#include "app/wizard/MainContext.h"
#include "ui/controls/RichEditUI.h"
#include "ui/list/ListUI.h"

#include <QObject>
#include <QTimer>

#include <filesystem>
#include <functional>
#include <memory>

// User-interface thread.
class InlinePreview : public QObject
{
public:
    // The window's controls are there. current gives the selected file, or null.
    InlinePreview(MainContext& context, std::function<const FoundRow*()> current);
    InlinePreview(const InlinePreview&) = delete;
    InlinePreview& operator=(const InlinePreview&) = delete;
    // Removes the picture that was shown last.
    ~InlinePreview() override;

    // Another file was selected. With the keyboard it is fetched only once the selection rests: to walk through a list would
    // open a window at each row otherwise.
    void OnSelect();
    // Plays a sound or a clip that was fetched.
    void Play(const PreviewData& data) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ShowCurrent();
    void Fetch(const FoundRow& found);
    void ShowFetched(CPreviewWnd& fetched);

    MainContext& m_context;
    std::function<const FoundRow*()> m_current;
    CListUI* m_list;
    CRichEditUI* m_pane;
    QTimer m_delay;
    QTimer m_keyAtWork;  // in the list
    std::filesystem::path m_tempPath;
};
