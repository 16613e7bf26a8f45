// Restores what is ticked, or one record, into the folder of the state, and reports on each file. It stays open on its report.
#pragma once

#include "app/popups/TaskWnd.h"
#include "app/wizard/FileDialogs.h"

#include <map>

class CRecoverProcessWnd : public CTaskWnd
{
public:
    CRecoverProcessWnd();
    CRecoverProcessWnd(const CRecoverProcessWnd&) = delete;
    CRecoverProcessWnd& operator=(const CRecoverProcessWnd&) = delete;
    ~CRecoverProcessWnd() override;

    bool singleMode = false;
    const FoundRow* singleRecord = nullptr;
    IFileDialogs* dialogs = nullptr;  // null for the desktop's

    void InitWindow() override;
    void OnClick(const Notification& notification) override;
    QString GetWindowClassName() const override { return QStringLiteral("UIRecoverProcessWnd"); }

protected:
    void RunTask(const TaskContext& context) override;
    std::optional<int> CodeOfCancel() const override { return CloseCancelled; }
    bool IsDone() const override;
    void OnRows(const std::vector<ReportRow>& rows) override;
    void OnTaskInit() override;
    void OnVisibilities() override;

private:
    void ToggleDetail();
    void SaveReport();
    bool MayWriteInto(const std::filesystem::path& folder);

    QSize m_ownSize;
    bool m_isDetailShown = false;
    std::map<std::size_t, CControlUI*> m_rows;  // of the list, by their number
};
