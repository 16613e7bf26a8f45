// Holds what was fetched for a preview, and can show it as a window of its own, with a step to the next picture.
#pragma once

#include "app/popups/PopUpWnd.h"
#include "app/tasks/PreviewData.h"

#include <functional>
#include <vector>

class CRichEditUI;

// Deletes a picture's temporary file with itself, unless the path was taken over.
class CPreviewWnd : public CPopUpWnd
{
public:
    CPreviewWnd();
    CPreviewWnd(const CPreviewWnd&) = delete;
    CPreviewWnd& operator=(const CPreviewWnd&) = delete;
    ~CPreviewWnd() override;

    PreviewData data;
    // Given by the main window: the file rows of its list, to step through.
    std::function<std::vector<FoundRow>()> siblings;
    // Given by the main window: asks for the folder to restore to, with all its questions; false when it is not to be done.
    std::function<bool(QWidget* parent)> askRestoreFolder;

    // From now on the caller removes the file.
    std::filesystem::path TakeTempPath();

    void InitWindow() override;
    void OnClick(const Notification& notification) override;
    bool HandleMessage(std::uint32_t number, std::intptr_t wParam, std::intptr_t lParam) override;
    QString GetWindowClassName() const override { return QStringLiteral("UIPreviewWnd"); }

protected:
    void OnWindowInit() override;

private:
    void ShowData();
    void Step(bool isForward);
    void Recover();

    CRichEditUI* m_edit = nullptr;
    std::vector<FoundRow> m_siblings;
};
