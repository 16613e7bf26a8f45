#include "app/wizard/RestoreFlow.h"

#include "app/popups/MessageBox.h"
#include "app/popups/RecoverProcessWnd.h"
#include "app/wizard/MainTexts.h"
#include "session/Destination.h"
#include "texts/TextForms.h"

#include <algorithm>

namespace {

std::filesystem::path WithoutSeparator(const std::filesystem::path& folder)
{
    return folder.has_relative_path() && !folder.has_filename() ? folder.parent_path() : folder;
}

}  // namespace

bool RestoreFlow::MayWriteTo(const std::filesystem::path& folder, QWidget* parent) const
{
    const DestinationFault fault = m_context.state.FaultOf(folder);
    if (fault == DestinationFault::None) {
        return true;
    }
    const std::string question =
        fault == DestinationFault::OnSource ? MessageText("MSG0805") : DesktopText("DSK0104");
    return CMessageBox::Show(parent, CMessageBox::Confirm, {}, ToQt(question), 450, 150) ==
           CloseDone;
}

bool RestoreFlow::MayFill(const DestinationRoom& room, QWidget* parent) const
{
    if (room.IsEnough()) {
        return true;
    }
    const auto sizeText = [](std::uint64_t bytes) {
        return FormatSize(static_cast<std::int64_t>(std::min<std::uint64_t>(bytes, INT64_MAX)));
    };
    const std::string question =
        FormatText(ExtraText("EXT0205"), sizeText(room.neededBytes), sizeText(room.freeBytes));
    return CMessageBox::Show(parent, CMessageBox::Confirm, {}, ToQt(question), 450, 150) ==
           CloseDone;
}

bool RestoreFlow::AskFolder(QWidget* parent, std::uint64_t neededBytes)
{
    const auto chosen =
        m_context.services.dialogs->ChooseFolder(parent, ToQt(DesktopText("DSK0103")));
    if (!chosen) {
        return false;
    }
    m_context.state.restoreFolder = WithoutSeparator(*chosen);
    const std::filesystem::path& folder = m_context.state.restoreFolder;
    const Destination destination(folder, Layout::ByCategory);
    return MayWriteTo(folder, parent) &&
           MayFill({neededBytes, destination.FreeBytes().value_or(UINT64_MAX)}, parent);
}

void RestoreFlow::Start()
{
    const FlowGuard guard(m_context);
    if (!AskFolder(&m_context.window, SelectedBytes(m_context.state.selection))) {
        return;
    }
    auto* process = new CRecoverProcessWnd;
    process->SetMain(&m_context.window, &m_context.state);
    process->dialogs = m_context.services.dialogs;
    if (process->Create(&m_context.window, 500, 220)) {
        process->DoModal();
    }
    process->Release();
}
