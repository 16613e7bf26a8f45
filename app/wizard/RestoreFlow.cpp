#include "app/wizard/RestoreFlow.h"

#include "app/popups/MessageBox.h"
#include "app/popups/RecoverProcessWnd.h"
#include "app/wizard/MainTexts.h"
#include "session/Destination.h"

namespace {

std::filesystem::path WithoutSeparator(const std::filesystem::path& folder)
{
    return folder.has_relative_path() && !folder.has_filename() ? folder.parent_path() : folder;
}

// The worst that any scanned target says of the folder.
DestinationFault PlaceFault(const RecoveryState& state, const std::filesystem::path& folder)
{
    const Destination destination(folder, Layout::ByCategory);
    DestinationFault worst = DestinationFault::None;
    for (const auto& target : state.targets) {
        if (!target->engine) {
            continue;
        }
        const DestinationFault fault = destination.CheckPlace(target->engine->Target());
        if (fault == DestinationFault::OnSource) {
            return fault;
        }
        if (fault != DestinationFault::None) {
            worst = fault;
        }
    }
    return worst;
}

}  // namespace

bool RestoreFlow::MayWriteTo(const std::filesystem::path& folder, QWidget* parent) const
{
    const DestinationFault fault = PlaceFault(m_context.state, folder);
    if (fault == DestinationFault::None) {
        return true;
    }
    const std::string question =
        fault == DestinationFault::OnSource ? MessageText("MSG0805") : DesktopText("DSK0104");
    return CMessageBox::Show(parent, CMessageBox::Confirm, {}, ToQt(question), 450, 150) ==
           CloseDone;
}

bool RestoreFlow::AskFolder(QWidget* parent)
{
    const auto chosen =
        m_context.services.dialogs->ChooseFolder(parent, ToQt(DesktopText("DSK0103")));
    if (!chosen) {
        return false;
    }
    m_context.state.restoreFolder = WithoutSeparator(*chosen);
    return MayWriteTo(m_context.state.restoreFolder, parent);
}

void RestoreFlow::Start()
{
    const FlowGuard guard(m_context);
    if (!AskFolder(&m_context.window)) {
        return;
    }
    auto* process = new CRecoverProcessWnd;
    process->SetMain(&m_context.window, &m_context.state);
    if (process->Create(&m_context.window, 500, 220)) {
        process->DoModal();
    }
    process->Release();
}
