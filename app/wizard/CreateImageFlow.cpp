#include "app/wizard/CreateImageFlow.h"

#include "app/popups/CreateImageProcessWnd.h"
#include "app/popups/RescueProcessWnd.h"
#include "app/wizard/MainTexts.h"
#include "platform/Folders.h"
#include "texts/LanguageManager.h"

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
        const Earlier earlier = AskForEarlier(*source, *chosen);
        if (earlier == Earlier::GoOn) {
            Rescue(*source, *chosen, std::nullopt);
            OfferImage(*chosen);
            return;
        }
        if (earlier != Earlier::NotThere && MayWrite(*source, *chosen)) {
            if (earlier == Earlier::Drop) {
                // It would say of the new image what is missing in the old one.
                (void)RemoveFile(RescueTask(TargetOf(*source), *chosen).MapFile());
            }
            Copy(*source, *chosen);
            OfferImage(*chosen);
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

void CreateImageFlow::OfferImage(const std::filesystem::path& file) const
{
    if (Ask(CMessageBox::Question, MessageText("MSG0214"), 400, 150) == CloseDone) {
        m_useImage(file);
    }
}

// What speaks against the file for a rescue speaks against it for a copy too, and is told there.
CreateImageFlow::Earlier CreateImageFlow::AskForEarlier(const ImageSource& source,
                                                        const std::filesystem::path& file) const
{
    RescueTask task(TargetOf(source), file);
    bool mayBeOnSource = false;
    while (const std::optional<RescueProblem> problem = task.NextProblem()) {
        if (problem->fault != RescueFault::Image || !problem->image.IsQuestion()) {
            return Earlier::None;
        }
        mayBeOnSource = mayBeOnSource || problem->image.fault == ImageFault::MayBeOnSource;
    }
    if (!task.GoesOn()) {
        return Earlier::None;
    }
    if (Ask(CMessageBox::Question, ExtraText("EXT0208"), 450, 150) != CloseDone) {
        // Escape declines too, and hours of a failing disk's last reading are not thrown away by one key.
        const bool isMeant = Ask(CMessageBox::Confirm, ExtraText("EXT0283"), 450, 150) == CloseDone;
        return isMeant ? Earlier::Drop : Earlier::NotThere;
    }
    const bool isRefused =
        mayBeOnSource && Ask(CMessageBox::Confirm, DesktopText("DSK0106"), 450, 150) != CloseDone;
    return isRefused ? Earlier::NotThere : Earlier::GoOn;
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
    const ImageOutcome outcome = process->outcome;
    process->Release();
    if (code != CloseFailed) {
        return;
    }
    QThread::msleep(FailurePauseMilliseconds);
    Ask(CMessageBox::Information, MessageText("MSG0217"), 300, 130);
    if (outcome.end == ImageEnd::ReadFault &&
        Ask(CMessageBox::Question, ExtraText("EXT0207"), 450, 150) == CloseDone) {
        Rescue(source, file, outcome.WrittenBytes());
    }
}

void CreateImageFlow::Rescue(const ImageSource& source,
                             const std::filesystem::path& file,
                             std::optional<std::uint64_t> copiedBytes)
{
    auto* process = new CRescueProcessWnd;
    process->SetMain(&m_context.window, &m_context.state);
    process->source = TargetOf(source);
    process->outputPath = file;
    process->copiedBytes = copiedBytes;
    if (process->Create(&m_context.window, 450, 270)) {
        process->DoModal();
    }
    const RescueOutcome outcome = process->outcome;
    const std::optional<RescueProblem> problem = process->problem;
    process->Release();
    const bool hasNoRoom = problem && problem->image.fault == ImageFault::NoRoom;
    Ask(CMessageBox::Information,
        hasNoRoom ? MessageText("MSG0221")
                  : RescueSummary(outcome, LanguageManager::GetInstance().GetSection("Extras")),
        450, 150);
}
