#include "app/wizard/MainWnd.h"

#include "app/popups/MessageBox.h"
#include "app/popups/Messages.h"
#include "app/preview/PreviewWnd.h"
#include "app/wizard/AssistMenu.h"
#include "app/wizard/DiskTexts.h"
#include "app/wizard/MainParts.h"
#include "app/wizard/MainTexts.h"
#include "texts/LanguageManager.h"
#include "ui/custom/CustomElements.h"

#include <QCoreApplication>
#include <QDropEvent>
#include <QKeyEvent>

#include <utility>

CMainWnd::CMainWnd(Session& session, MainServices services)
    : m_state(session), m_context{*this, m_state, std::move(services)}
{
    if (m_context.services.dialogs == nullptr) {
        m_context.services.dialogs = &m_dialogs;
    }
}

// The parts go first, and take what they show of the targets and results with them.
CMainWnd::~CMainWnd()
{
    m_parts.reset();
}

void CMainWnd::OnFinalMessage()
{
    QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
    deleteLater();
}

std::unique_ptr<CControlUI> CMainWnd::CreateControl(const QString& element,
                                                    const std::shared_ptr<Skin>& skin)
{
    return MakeCustomControl(element, skin);
}

void CMainWnd::InitWindow()
{
    m_parts = std::make_unique<MainParts>(m_context);
    BindHandlers();
    FindControl(QStringLiteral("LblProductName"))->SetText(QStringLiteral("Orvanta Lumivault"));
    setAcceptDrops(true);
}

void CMainWnd::BindHandlers()
{
    const auto bind = [this](const char* name, QLatin1String type, auto handler) {
        FindControl(QLatin1String(name))
            ->AddHandler([type, handler](const Notification& notification) {
                if (notification.type != type) {
                    return false;
                }
                handler(notification);
                return true;
            });
    };
    bind("BtnAssist", NotifyClick, [this](const Notification&) { ShowAssistMenu(*this); });
    bind("CheckAll", NotifyHeaderClick,
         [this](const Notification&) { m_parts->results.OnCheckAll(); });
    bind("OptGrid", NotifySelectChanged, [this](const Notification&) { m_parts->grid.Refresh(); });
    bind("PartitionListBar", NotifyTimer,
         [this](const Notification& timer) { m_parts->refresh.OnTimer(timer.wParam); });
    const auto toggles = [this](TypeCategory category) {
        return [this, category](const Notification&) { m_parts->types.ToggleBlock(category); };
    };
    bind("BtnPhoto", NotifyClick, toggles(TypeCategory::Photo));
    bind("BtnAudio", NotifyClick, toggles(TypeCategory::Audio));
    bind("BtnVideo", NotifyClick, toggles(TypeCategory::Video));
}

void CMainWnd::OnWindowInit()
{
    ApplyLanguage(LanguageManager::GetInstance().GetSection("MainWnd"));
    m_parts->refresh.Request(RefreshKind::Start);
    m_parts->types.Collect();
    m_parts->pages.Enter(WizardPage::Mode);
    if (m_context.services.watchesDevices) {
        m_parts->refresh.Watch(
            [this](std::intptr_t event) { PostWindowMessage(WM_DEVICECHANGE, event); });
    }
}

void CMainWnd::Notify(const Notification& notification)
{
    CControlUI& sender = *notification.sender;
    const QString& type = notification.type;
    if (type == NotifyWindowInit) {
        OnWindowInit();
    } else if (type == NotifySelectChanged) {
        OnOptionChanged(sender);
    } else if (type == NotifyCheckBoxSelectChanged) {
        if (const auto* box = dynamic_cast<CTreeNodeButtonUI*>(&sender)) {
            m_parts->results.OnTreeCheck(box->GetNode());
        }
    } else if (type == NotifyItemSelect) {
        OnItemSelect(sender);
    } else if (type == NotifyListCheckClick) {
        if (const auto* row = dynamic_cast<const FileRow*>(&sender)) {
            m_parts->results.OnRowCheck(*row);
        }
    } else if (type == NotifyListItemDoubleClick) {
        OnRowDoubleClick(sender);
    } else if (type == NotifyHeaderClick) {
        if (auto* header = dynamic_cast<CListHeaderItemUI*>(&sender);
            header != nullptr &&
            header->GetParent()->GetParent() == FindControl(QStringLiteral("FileList"))) {
            m_parts->results.OnHeaderClick(*header);
        }
    } else if (type == NotifyHot) {
        OnHot(sender.GetName());
    } else {
        WindowImplBase::Notify(notification);
    }
}

void CMainWnd::OnHot(const QString& name)
{
    CControlUI* info = FindControl(QStringLiteral("TxtMainInfo"));
    if (name == QLatin1String("BtnRecoverMode")) {
        info->SetText(ToQt(MessageText("MSG0101")));
    } else if (name == QLatin1String("BtnCreateImageMode")) {
        info->SetText(ToQt(MessageText("MSG0102")));
    }
}

void CMainWnd::OnOptionChanged(CControlUI& sender)
{
    const WizardPage page = m_parts->pages.PageOf(sender);
    if (page != WizardPage::Mode) {
        m_parts->pages.Enter(page);
    } else if (auto* option = dynamic_cast<COptionUI*>(&sender)) {
        m_parts->types.OnSelectChanged(*option);
    }
}

void CMainWnd::OnItemSelect(const CControlUI& sender)
{
    const QString& name = sender.GetName();
    if (name == QLatin1String("DiskList")) {
        ShowDetails();
    } else if (name == QLatin1String("FileList")) {
        m_parts->preview.OnSelect();
    } else if (name == QLatin1String("TypeTree")) {
        m_parts->results.ShowGroup();
        m_parts->grid.Refresh();
    }
}

void CMainWnd::ShowDetails()
{
    const RecoveryTarget* target = m_parts->disks.CurrentTarget();
    if (target == nullptr) {
        return;
    }
    m_targetChosen = true;
    FindControl(QStringLiteral("BtnAdvanceScan"))->SetEnabled(true);
    FindControl(QStringLiteral("TabFileType"))->SetEnabled(true);
    const DetailTexts texts = DetailsOf(*target);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        FindControl(QStringLiteral("Label%1").arg(i + 1))->SetText(texts.at(i));
    }
}

void CMainWnd::OnRowDoubleClick(const CControlUI& sender)
{
    const auto* row = dynamic_cast<const CListImageTextNodeUI*>(&sender);
    if (row == nullptr || row->GetNode() == nullptr) {
        return;
    }
    CListExUI::Node* node = row->GetNode();
    if (!node->Children.empty()) {
        FindControlAs<CDiskListUI>(QStringLiteral("DiskList"))
            ->SetChildVisible(node, !node->ChildVisible);
    } else if (m_parts->pages.mode == WizardMode::Recover) {
        m_parts->scan.Start(m_targetChosen);
    }
}

void CMainWnd::OnClick(const Notification& notification)
{
    struct Button
    {
        const char* name;
        void (*click)(CMainWnd& window);
    };
    static constexpr Button Buttons[] = {
        {"BtnRecoverMode",
         [](CMainWnd& window) { window.m_parts->EnterMode(WizardMode::Recover); }},
        {"BtnCreateImageMode",
         [](CMainWnd& window) { window.m_parts->EnterMode(WizardMode::CreateImage); }},
        {"BtnScan", [](CMainWnd& window) { window.m_parts->scan.Start(window.m_targetChosen); }},
        {"BtnAdvanceScan",
         [](CMainWnd& window) { window.m_parts->pages.Choose(WizardPage::Types); }},
        {"BtnRecover", [](CMainWnd& window) { window.m_parts->restore.Start(); }},
        {"BtnPrev", [](CMainWnd& window) { window.m_parts->pages.GoBack(); }},
        {"BtnNext", [](CMainWnd& window) { window.OnNext(); }},
        {"BtnLoadImage", [](CMainWnd& window) { window.LoadImage(); }},
        {"BtnCreateImage",
         [](CMainWnd& window) { window.m_parts->image.Start(window.m_targetChosen); }},
        {"BtnLikeIt",
         [](CMainWnd& window) {
             auto* popup = new CPopUpWnd(QStringLiteral("LikeItWnd.xml"));
             popup->SetMain(&window, &window.m_state);
             if (popup->Create(&window, 520, 230)) {
                 popup->DoModal();
             }
             popup->Release();
         }},
    };
    for (const Button& button : Buttons) {
        if (notification.sender->GetName() == QLatin1String(button.name)) {
            button.click(*this);
            return;
        }
    }
    WindowImplBase::OnClick(notification);
}

void CMainWnd::OnNext()
{
    switch (m_parts->pages.Current()) {
    case WizardPage::Mode:
        m_parts->pages.Choose(WizardPage::Disks);
        break;
    case WizardPage::Disks:
        if (FindControl(QStringLiteral("BtnScan"))->IsEnabled()) {
            m_parts->pages.Choose(WizardPage::Types);
        } else {
            CMessageBox::Show(this, CMessageBox::Information, {}, ToQt(DesktopText("DSK0109")), 300,
                              130);
        }
        break;
    case WizardPage::Types:
        m_parts->pages.Choose(WizardPage::Results);
        break;
    case WizardPage::Results:
        break;
    }
}

void CMainWnd::LoadImage()
{
    const FlowGuard guard(m_context);
    if (const auto path = m_context.services.dialogs->OpenImage(this)) {
        AddImage(*path);
    }
}

bool CMainWnd::IsListingDisks() const
{
    return m_parts->refresh.IsListing();
}

void CMainWnd::AddImage(const std::filesystem::path& path)
{
    m_parts->disks.AddImage(path);
}

void CMainWnd::OpenImages(const std::vector<std::filesystem::path>& images)
{
    m_parts->arrivals.Take(images);
}

void CMainWnd::dragEnterEvent(QDragEnterEvent* event)
{
    if (!ImageArrivals::FilesOf(*event->mimeData()).empty()) {
        event->acceptProposedAction();
    }
}

void CMainWnd::dropEvent(QDropEvent* event)
{
    OpenImages(ImageArrivals::FilesOf(*event->mimeData()));
    event->acceptProposedAction();
}

void CMainWnd::ShowPreviewWindow(std::intptr_t window)
{
    auto* preview = PointerOf<CPreviewWnd>(window);
    if (preview == nullptr) {
        return;
    }
    const FlowGuard guard(m_context);
    preview->SetMain(this, &m_state);
    if (!preview->siblings) {
        preview->siblings = [this] { return m_parts->results.ListedFiles(); };
    }
    if (!preview->askRestoreFolder) {
        preview->askRestoreFolder = [this, preview](QWidget* parent) {
            return m_parts->restore.AskFolder(parent, preview->data.row.record.FileSize);
        };
    }
    if (preview->data.isPlayable && !preview->data.tempPath.empty()) {
        m_parts->preview.Play(preview->data);
    } else if (preview->Create(this, 600, 500)) {
        preview->DoModal();
    }
    preview->Release();
}

bool CMainWnd::HandleMessage(std::uint32_t number, std::intptr_t wParam, std::intptr_t lParam)
{
    switch (number) {
    case WM_DEVICECHANGE:
        m_parts->refresh.OnDeviceChange(wParam);
        return true;
    case WM_SCAN_DONE:
        m_parts->scan.OnScanDone();
        return true;
    case WM_SEARCH_DONE:
        m_parts->grid.Forget();
        m_parts->scan.OnSearchDone();
        m_parts->grid.Refresh();
        return true;
    case WM_SHOW_PREVIEW:
        ShowPreviewWindow(lParam);
        return true;
    case WM_OPEN_IMAGES:
        m_parts->arrivals.Open();
        return true;
    case WM_LANGUAGE_CHANGED:
        OnLanguageChanged();
        return true;
    default:
        break;
    }
    if (const QString item = MenuItemOf(number); !item.isEmpty()) {
        if (m_context.services.openMenuItem) {
            m_context.services.openMenuItem(item);
        }
        return true;
    }
    return WindowImplBase::HandleMessage(number, wParam, lParam);
}

void CMainWnd::OnLanguageChanged()
{
    ApplyLanguage(LanguageManager::GetInstance().GetSection("MainWnd"));
    m_parts->RewriteTexts();
    if (m_parts->disks.HasCurrent()) {
        SendNotify(*FindControl(QStringLiteral("DiskList")), NotifyItemSelect);
    }
}

// Enter and Escape that no control has used would close a dialog; they do nothing here.
bool CMainWnd::MessageFilter(QKeyEvent& event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter ||
           event.key() == Qt::Key_Escape;
}
