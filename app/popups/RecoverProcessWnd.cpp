#include "app/popups/RecoverProcessWnd.h"

#include "app/popups/MessageBox.h"
#include "app/tasks/RestoreReport.h"
#include "app/tasks/RestoreWorker.h"
#include "platform/FaultGuard.h"
#include "texts/LanguageManager.h"
#include "texts/TextFormat.h"
#include "ui/list/ListUI.h"

#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QSaveFile>
#include <QScreen>
#include <QUrl>

#include <utility>

namespace {

constexpr TaskLook RestoreLook = {TaskKind::Restore, "RecoverProcessWnd.xml", "RecoverProcessWnd",
                                  "MSG1103", 150};
constexpr int DetailWidth = 150;
constexpr int DetailHeight = 300;
enum Column
{
    FileColumn,
    StatusColumn,
    DamageColumn
};

void WriteRow(CListUI::Row& shown, const ReportRow& row)
{
    const auto write = [&](int column, const std::string& text) {
        const QString plain = PlainRun(QString::fromStdString(text));
        shown.SetColumnText(column,
                            row.isGood ? plain : QStringLiteral("<c #FF0000>%1</c>").arg(plain));
    };
    write(FileColumn, row.path);
    write(StatusColumn, row.status);
    shown.SetColumnText(DamageColumn,
                        QStringLiteral("<c #A85100>%1</c>")
                            .arg(PlainRun(QString::fromStdString(DamageText(
                                row, LanguageManager::GetInstance().GetSection("Extras"))))));
}

// Where windows have no place that they know, the edges are those of a window in the corner: its size.
QPoint FarEdge(const QWidget& window)
{
    const bool hasPlace = QGuiApplication::platformName() != QLatin1String("wayland");
    return hasPlace ? QPoint(window.geometry().right() + 1, window.geometry().bottom() + 1)
                    : QPoint(window.width(), window.height());
}

}  // namespace

CRecoverProcessWnd::CRecoverProcessWnd() : CTaskWnd(RestoreLook) {}

CRecoverProcessWnd::~CRecoverProcessWnd()
{
    StopWorker();
}

void CRecoverProcessWnd::InitWindow()
{
    CTaskWnd::InitWindow();
    m_ownSize = size();
    if (auto* const list = FindControlAs<CListUI>(QStringLiteral("DetailList"))) {
        list->SetAttribute(QStringLiteral("itemshowhtml"), QStringLiteral("true"));
    }
}

void CRecoverProcessWnd::RunTask(const TaskContext& context)
{
    RestoreWorker worker(context, *m_state);
    worker.faultGuard = &RunWithFaultGuard;
    if (singleMode) {
        worker.RunOne(singleRecord);
    } else {
        worker.RunMany();
    }
}

bool CRecoverProcessWnd::IsDone() const
{
    return Board().IsVisible("FinishBtn");
}

void CRecoverProcessWnd::OnRows(const std::vector<ReportRow>& rows)
{
    auto* const list = FindControlAs<CListUI>(QStringLiteral("DetailList"));
    if (list == nullptr) {
        return;
    }
    std::vector<std::unique_ptr<CListUI::Row>> behind;
    for (const ReportRow& row : rows) {
        // One that changes goes where a new one would.
        if (const auto known = m_rows.find(row.number); known != m_rows.end()) {
            list->AddRows(std::exchange(behind, {}));
            list->Remove(known->second);
        }
        auto shown = std::make_unique<CListUI::Row>();
        WriteRow(*shown, row);
        m_rows[row.number] = shown.get();
        if (row.isGood) {
            behind.push_back(std::move(shown));
            continue;
        }
        std::unique_ptr<CControlUI> first = std::move(shown);
        list->AddAt(first, 0);
    }
    list->AddRows(std::move(behind));
}

void CRecoverProcessWnd::OnClick(const Notification& notification)
{
    const QString& name = notification.sender->GetName();
    if (name == QLatin1String("OpenBtn")) {
        QDesktopServices::openUrl(
            QUrl::fromLocalFile(QString::fromStdString(m_state->restoreFolder.string())));
    } else if (name == QLatin1String("FinishBtn")) {
        CloseWith(CloseDone);
    } else if (name == QLatin1String("DetailBtn")) {
        ToggleDetail();
    } else if (name == QLatin1String("SaveBtn")) {
        SaveReport();
    } else {
        CTaskWnd::OnClick(notification);
    }
}

void CRecoverProcessWnd::ToggleDetail()
{
    m_isDetailShown = !m_isDetailShown;
    for (const char* const name : {"DetailList", "SaveBtn"}) {
        if (CControlUI* const control = FindControl(QLatin1String(name))) {
            control->SetVisible(m_isDetailShown);
        }
    }
    QSize wanted = m_ownSize;
    if (m_isDetailShown) {
        const QPoint edge = FarEdge(*this);
        wanted = QSize(edge.x() + DetailWidth, edge.y() + DetailHeight)
                     .boundedTo(screen()->availableSize());
    }
    resize(wanted);
    Center();
}

void CRecoverProcessWnd::OnTaskInit()
{
    const std::pair<const char*, const char*> texts[] = {{"SaveBtn", "EXT0251"},
                                                         {"Damage", "EXT0252"}};
    for (const auto& [name, key] : texts) {
        if (CControlUI* const control = FindControl(QLatin1String(name))) {
            control->SetText(ExtraText(key));
        }
    }
}

// There is a report once all that was to be done is done.
void CRecoverProcessWnd::OnVisibilities()
{
    if (CControlUI* const save = FindControl(QStringLiteral("SaveBtn"))) {
        save->SetEnabled(IsDone());
    }
}

// A report, too, can overwrite what was lost.
bool CRecoverProcessWnd::MayWriteInto(const std::filesystem::path& folder)
{
    if (folder == m_state->restoreFolder) {
        return true;  // the user was asked before
    }
    const DestinationFault fault = m_state->FaultOf(folder);
    return fault == DestinationFault::None ||
           CMessageBox::Show(this, CMessageBox::Confirm, {},
                             fault == DestinationFault::OnSource ? Message("MSG0805")
                                                                 : DesktopText("DSK0104"),
                             450, 150) == CloseDone;
}

void CRecoverProcessWnd::SaveReport()
{
    FileDialogs ofDesktop;
    IFileDialogs& asked = dialogs != nullptr ? *dialogs : ofDesktop;
    LanguageSection& extras = LanguageManager::GetInstance().GetSection("Extras");
    const std::optional<std::filesystem::path> path =
        asked.SaveText(this, m_state->restoreFolder / (extras.Get("EXT0257") + ".txt"));
    if (!path || !MayWriteInto(path->parent_path())) {
        return;
    }
    const std::string text = RestoreReportText(Board().Rows(), Board().Text("summary"), extras);
    // What stood there before stays until the new one is whole.
    QSaveFile file(QFile::decodeName(QByteArray::fromStdString(path->string())));
    const QByteArray bytes = QByteArray::fromStdString(text);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        const std::string told =
            FormatText(extras.Get("EXT0256"), file.errorString().toStdString());
        CMessageBox::Show(this, CMessageBox::Warning, {}, QString::fromStdString(told), 450, 150);
    }
}
