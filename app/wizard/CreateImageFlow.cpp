#include "app/wizard/CreateImageFlow.h"

#include "app/popups/CreateImageProcessWnd.h"
#include "app/wizard/MainTexts.h"

#include <QThread>

#include <utility>

namespace {

constexpr unsigned long FailurePauseMilliseconds = 100;

}  // namespace

CreateImageFlow::CreateImageFlow(MainContext& context,
                                 DiskRows& disks,
                                 std::function<void(const std::filesystem::path& image)> useImage)
    : m_context(context), m_disks(disks), m_useImage(std::move(useImage))
{
}

int CreateImageFlow::Ask(CMessageBox::Kind kind,
                         const std::string& message,
                         int width,
                         int height) const
{
    return CMessageBox::Show(&m_context.window, kind, {}, ToQt(message), width, height);
}

void CreateImageFlow::Start(bool targetChosen)
{
    const FlowGuard guard(m_context);
    const std::optional<ImageSource> source =
        ImageSourceOf(m_disks.CurrentTarget(), m_disks.CurrentDisk());
    if (!targetChosen || !source) {
        Ask(CMessageBox::Information, MessageText("MSG0216"), 400, 130);
        return;
    }
    std::filesystem::path proposal = ProposedName(*source);
    while (const auto chosen = m_context.services.dialogs->SaveImage(&m_context.window, proposal)) {
        if (MayWrite(*source, *chosen)) {
            Copy(*source, *chosen);
            return;
        }
        proposal = *chosen;
    }
}

bool CreateImageFlow::MayWrite(const ImageSource& source, const std::filesystem::path& file) const
{
    CreateImageChecks checks(source, file);
    while (const std::optional<ImageObjection> objection = checks.Next()) {
        if (!objection->isQuestion) {
            Ask(CMessageBox::Information, objection->text, 300, 130);
            return false;
        }
        if (Ask(CMessageBox::Confirm, objection->text, 450, 150) != CloseDone) {
            return false;
        }
    }
    return true;
}

void CreateImageFlow::Copy(const ImageSource& source, const std::filesystem::path& file)
{
    auto* process = new CCreateImageProcessWnd;
    process->SetMain(&m_context.window, &m_context.state);
    process->outputPath = file;
    if (source.target != nullptr) {
        process->targets = {source.target};
    } else {
        process->diskNumber = static_cast<int>(source.disk.number);
    }
    const int code =
        process->Create(&m_context.window, 450, 250) ? process->DoModal() : CloseFailed;
    process->Release();
    if (code == CloseFailed) {
        QThread::msleep(FailurePauseMilliseconds);
        Ask(CMessageBox::Information, MessageText("MSG0217"), 300, 130);
    }
    if (Ask(CMessageBox::Question, MessageText("MSG0214"), 400, 150) == CloseDone) {
        m_useImage(file);
    }
}
