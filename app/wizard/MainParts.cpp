#include "app/wizard/MainParts.h"

#include "app/popups/MessageBox.h"
#include "app/wizard/MainTexts.h"

MainParts::MainParts(MainContext& mainContext)
    : context(mainContext),
      pages(context.window),
      types(context.window),
      disks(*context.window.FindControlAs<CDiskListUI>(QStringLiteral("DiskList")), context.state),
      results(context, types.Filter()),
      grid(context),
      scan(context, disks, results, pages, types.Filter()),
      restore(context),
      image(context, disks, [this](const std::filesystem::path& path) { UseImage(path); }),
      preview(context, [this] { return results.Current(); }),
      refresh(context.state.session,
              *context.window.FindControl(QStringLiteral("PartitionListBar")),
              MakeRefreshOwner()),
      imageParts(
          {[this] { return context.flows == 0; },
           [this](char16_t imageId, const TargetParts& parts) { AddImageParts(imageId, parts); }}),
      arrivals(context,
               [this](const std::vector<std::filesystem::path>& images) { LoadImages(images); })
{
    pages.foundFiles = [this] { return context.state.results.size(); };
    pages.onResultTexts = [this] { results.UpdateSelectionLabel(); };
    disks.onImage = [this](const RecoveryTarget& listed) {
        imageParts.Start(listed.imageId, listed.Place());
    };
    disks.onRelease = [this](const RecoveryTarget& target) { scan.Forget(target); };
}

MainParts::~MainParts()
{
    results.Clear();
}

DiskRefresh::Owner MainParts::MakeRefreshOwner()
{
    DiskRefresh::Owner owner;
    owner.apply = [this](const DiskRefresh::Listed& listed) { Apply(listed); };
    owner.mayApply = [this] { return context.flows == 0; };
    owner.selectsArrived = [this] { return !scan.IsScanning(); };
    owner.onWaiting = [this](bool isWaiting) {
        context.window.FindControl(QStringLiteral("WaitText"))
            ->SetText(ToQt(DesktopText("DSK0108")));
        context.window.FindControl(QStringLiteral("WaitBar"))->SetVisible(isWaiting);
    };
    return owner;
}

void MainParts::Apply(const DiskRefresh::Listed& listed)
{
    // It says nothing about what has come or gone.
    if (listed.list.end != ListEnd::Complete) {
        TellNotListed();
        return;
    }
    m_knowsNotListed = false;
    switch (listed.kind) {
    case RefreshKind::Start:
        disks.AddArrived(listed.list.rows, false);
        // The user may have come to the list before it was there.
        if (pages.Current() != WizardPage::Mode && !disks.HasCurrent()) {
            disks.ApplyMode(pages.mode == WizardMode::CreateImage);
        }
        break;
    case RefreshKind::Arrival:
        disks.AddArrived(listed.list.rows, listed.selectsArrived);
        break;
    case RefreshKind::Removal:
        disks.RemoveMissing(listed.list.rows);
        break;
    }
}

// Once: device events may make many lists, each with the same fault.
void MainParts::TellNotListed()
{
    if (m_knowsNotListed) {
        return;
    }
    m_knowsNotListed = true;
    const FlowGuard guard(context);
    CMessageBox::Show(&context.window, CMessageBox::Warning, {}, ToQt(DesktopText("DSK0115")), 450,
                      150);
}

void MainParts::EnterMode(WizardMode mode)
{
    pages.mode = mode;
    disks.ApplyMode(mode == WizardMode::CreateImage);
    pages.Choose(WizardPage::Disks);
}

void MainParts::UseImage(const std::filesystem::path& path)
{
    EnterMode(WizardMode::Recover);
    disks.Select(disks.AddImage(path));
    pages.Choose(WizardPage::Types);
}

void MainParts::AddImageParts(char16_t imageId, const TargetParts& parts)
{
    const RecoveryTarget* current = disks.CurrentTarget();
    if (disks.AddParts(imageId, parts) && current != nullptr && current->imageId == imageId) {
        // More is known of it by now.
        context.window.SendNotify(*context.window.FindControl(QStringLiteral("DiskList")),
                                  NotifyItemSelect);
    }
}

void MainParts::LoadImages(const std::vector<std::filesystem::path>& images)
{
    EnterMode(WizardMode::Recover);
    for (const std::filesystem::path& path : images) {
        disks.Select(disks.AddImage(path));
    }
}

void MainParts::RewriteTexts()
{
    pages.RewriteTexts();
    disks.RewriteTexts();
    results.RewriteTexts();
    scan.RewriteTexts();
    grid.RewriteTexts();
}
