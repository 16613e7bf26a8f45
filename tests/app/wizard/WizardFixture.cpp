#include "tests/app/wizard/WizardFixture.h"

#include "app/popups/Messages.h"
#include "app/popups/PopUpWnd.h"
#include "platform/SystemFiles.h"
#include "texts/LanguageManager.h"
#include "ui/controls/ContainerUI.h"
#include "ui/custom/ListExUI.h"
#include "ui/markup/TextMarkup.h"

#include <QTest>

namespace {

constexpr int WaitMilliseconds = 20000;

}  // namespace

std::optional<std::filesystem::path> TestDialogs::SaveImage(QWidget*,
                                                            const std::filesystem::path& proposal)
{
    proposals.push_back(proposal.string());
    if (saves.empty()) {
        return std::nullopt;
    }
    const std::filesystem::path next = saves.front();
    saves.pop_front();
    return next;
}

std::optional<std::filesystem::path> TestDialogs::ChooseFolder(QWidget*, const QString& title)
{
    folderTitle = title;
    return folder;
}

WizardTest::WizardTest()
{
    (void)LanguageManager::GetInstance().SetLanguage("English");
    CMessageBox::UseAnswerer([this](CMessageBox::Kind kind, const QString& message) {
        m_asked.push_back(std::to_string(kind) + " " + message.toStdString());
        const int answer = m_answers.empty() ? CloseDone : m_answers.front();
        if (!m_answers.empty()) {
            m_answers.pop_front();
        }
        return answer;
    });
}

WizardTest::~WizardTest()
{
    delete m_window;
    CMessageBox::UseAnswerer({});
}

void WizardTest::Make()
{
    MainServices services;
    services.dialogs = &m_dialogs;
    services.watchesDevices = false;
    services.playVideo = [this](const auto& file) { m_played.push_back("video " + file.string()); };
    services.playAudio = [this](const auto& file) { m_played.push_back("audio " + file.string()); };
    services.openMenuItem = [this](const QString& item) {
        m_menuItems.push_back(item.toStdString());
    };
    m_window = new CMainWnd(*m_session, std::move(services));
    ASSERT_TRUE(m_window->Create(nullptr));
    EXPECT_TRUE(m_window->MarkupProblems().isEmpty());
    m_window->show();
    MountTestFolder("0:77 / / rw - tmpfs none rw");
}

void WizardTest::Open()
{
    Make();
    ASSERT_TRUE(WaitFor([this] { return !m_window->IsListingDisks(); }));
}

bool WizardTest::WaitFor(const std::function<bool()>& condition)
{
    return QTest::qWaitFor(condition, WaitMilliseconds);
}

int WizardTest::Page() const
{
    return Get<CTabLayoutUI>("TabPage").GetCurSel();
}

std::string WizardTest::DiskRows() const
{
    auto& list = Get<CListExUI>("DiskList");
    std::string rows;
    for (int i = 0; i < list.GetCount(); ++i) {
        const CListUI::Row* row = list.GetItemAt(i);
        if (row->IsVisible()) {
            rows += (rows.empty() ? "" : "|") + std::to_string(list.FindNode(row)->Level) + ":" +
                    PlainText(row->GetText(), true).trimmed().toStdString();
        }
    }
    return rows;
}

std::string WizardTest::Column(int column) const
{
    std::string texts;
    for (int i = 0; i < Files().GetCount(); ++i) {
        texts += Files().GetItemAt(i)->GetColumnText(column).toStdString() + " ";
    }
    return texts;
}

void WizardTest::MountTestFolder(const std::string& where)
{
    FileIdentity here;
    ASSERT_EQ(IdentifyPath(m_folder.Path(), here), ResultSuccess);
    std::filesystem::remove(m_system.Folder() / "proc/self/mountinfo");
    m_system.AddMount(std::to_string(here.mountId) + " 1 " + where);
}

void WizardTest::Find(const std::vector<std::pair<std::string, std::uint64_t>>& files)
{
    std::vector<FoundRow>& results = m_window->State().results;
    for (const auto& [name, size] : files) {
        FoundRow& row = results.emplace_back();
        row.record.SetName(name);
        row.record.FileSize = size;
        row.record.EngineKind = EngineKindCarved;
        row.at = {EngineKindCarved, static_cast<std::uint32_t>(results.size())};
    }
    m_window->HandleMessage(WM_SEARCH_DONE, 0, 0);
}

void WizardTest::Shoot(const char* name) const
{
    if (const QString folder = qEnvironmentVariable("LUMIVAULT_SHOTS"); !folder.isEmpty()) {
        QTest::qWait(100);
        m_window->grab().save(folder + QLatin1Char('/') + QLatin1String(name) +
                              QStringLiteral(".png"));
    }
}
