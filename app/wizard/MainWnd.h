// The one window of the program that stays: a wizard of four pages. It hands what happens to the parts that decide; see their
// files for what each does.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "app/wizard/MainContext.h"

#include <memory>
#include <vector>

struct MainParts;

class CMainWnd : public WindowImplBase
{
public:
    // The session outlives it. Made with new: it deletes itself when it was closed, and ends the
    // program then.
    CMainWnd(Session& session, MainServices services);
    CMainWnd(const CMainWnd&) = delete;
    CMainWnd& operator=(const CMainWnd&) = delete;
    ~CMainWnd() override;

    QString GetWindowClassName() const override { return QStringLiteral("FileRecoveryWnd"); }
    QString GetSkinFile() const override { return QStringLiteral("xml\\skin.xml"); }
    QString GetSkinFolder() const override { return QStringLiteral("Skins\\"); }
    void InitWindow() override;
    void OnFinalMessage() override;
    bool HandleMessage(std::uint32_t number, std::intptr_t wParam, std::intptr_t lParam) override;
    void Notify(const Notification& notification) override;
    void OnClick(const Notification& notification) override;
    bool MessageFilter(QKeyEvent& event) override;

    RecoveryState& State() { return m_state; }
    // A list of the disks is being made.
    bool IsListingDisks() const;
    // As if the user had chosen that file.
    void AddImage(const std::filesystem::path& path);
    // As if they had been dropped on the window: they are loaded once nothing stands in front of it.
    void OpenImages(const std::vector<std::filesystem::path>& images);

protected:
    std::unique_ptr<CControlUI> CreateControl(const QString& element,
                                              const std::shared_ptr<Skin>& skin) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void OnWindowInit();
    void BindHandlers();
    void OnHot(const QString& name);
    void OnOptionChanged(CControlUI& sender);
    void OnItemSelect(const CControlUI& sender);
    void OnRowDoubleClick(const CControlUI& sender);
    void OnNext();
    void LoadImage();
    void ShowDetails();
    void ShowPreviewWindow(std::intptr_t window);
    void OnLanguageChanged();

    FileDialogs m_dialogs;
    RecoveryState m_state;
    MainContext m_context;
    std::unique_ptr<MainParts> m_parts;  // from InitWindow on
    bool m_targetChosen = false;         // by the first selection of a target, for good
};
