// The main window, offscreen, on a made-up system; dialogs and message boxes are answered by the test.
#pragma once

#include "app/popups/MessageBox.h"
#include "app/wizard/MainWnd.h"
#include "tests/support/FatCard.h"
#include "tests/support/MadeUpSystem.h"
#include "ui/list/ListUI.h"
#include "ui/list/TreeViewUI.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

class TestDialogs : public IFileDialogs
{
public:
    std::optional<std::filesystem::path> OpenImage(QWidget*) override { return image; }
    std::optional<std::filesystem::path> SaveImage(QWidget*,
                                                   const std::filesystem::path& proposal) override;
    std::optional<std::filesystem::path> ChooseFolder(QWidget*, const QString& title) override;

    std::optional<std::filesystem::path> SaveText(QWidget*, const std::filesystem::path&) override
    {
        return text;
    }

    std::optional<std::filesystem::path> image;
    std::optional<std::filesystem::path> text;
    std::optional<std::filesystem::path> folder;
    std::deque<std::filesystem::path> saves;  // one a dialog; then it is cancelled
    std::vector<std::string> proposals;
    QString folderTitle;
};

class WizardTest : public testing::Test
{
protected:
    WizardTest();
    WizardTest(const WizardTest&) = delete;
    WizardTest& operator=(const WizardTest&) = delete;
    ~WizardTest() override;

    // Makes the window, which begins to list the disks that there are by now.
    void Make();
    // The same, and waits for the list.
    void Open();
    template <typename Control = CControlUI>
    Control& Get(const char* name) const
    {
        auto* control = m_window->FindControlAs<Control>(QLatin1String(name));
        if (control == nullptr) {
            throw std::runtime_error(std::string("no control ") + name);
        }
        return *control;
    }
    void Click(const char* name) { m_window->SendNotify(Get(name), NotifyClick); }
    std::string Text(const char* name) const { return Get(name).GetText().toStdString(); }
    bool IsVisible(const char* name) const { return Get(name).IsVisible(); }
    int Page() const;
    CListUI& Disks() const { return Get<CListUI>("DiskList"); }
    CListUI& Files() const { return Get<CListUI>("FileList"); }
    CTreeNodeUI& Node(const char* name) const { return Get<CTreeNodeUI>(name); }
    // "0:name|1:name": the texts of the disk list's first column with their levels, hidden rows left out.
    std::string DiskRows() const;
    // The texts of a column, each followed by a blank.
    std::string Column(int column) const;
    // A tick by the mouse or the space key.
    void Tick(int row) { Files().GetItemAt(row)->ToggleCheck(); }
    // The system says that the test's folders lie there: "8:0 / / rw - vfat none rw".
    void MountTestFolder(const std::string& where);
    // What would be found, as if a search had brought it: name, and size in bytes.
    void Find(const std::vector<std::pair<std::string, std::uint64_t>>& files);
    static bool WaitFor(const std::function<bool()>& condition);
    // Into the folder of LUMIVAULT_SHOTS, when it is set: for the eye, nothing is compared.
    void Shoot(const char* name) const;

    DataFolder m_data;
    TempFolder m_folder;
    MadeUpSystem m_system;
    TestDialogs m_dialogs;
    std::vector<std::string> m_played;
    std::vector<std::string> m_menuItems;
    std::vector<std::string> m_asked;  // "kind message"
    std::deque<int> m_answers;         // of the boxes to come; then CloseDone
    std::unique_ptr<Session> m_session = std::make_unique<Session>();
    CMainWnd* m_window = nullptr;
};
