#include "app/wizard/DiskRows.h"

#include "app/wizard/DiskTexts.h"
#include "app/wizard/MainContext.h"
#include "texts/TextForms.h"

#include <algorithm>
#include <set>

namespace {

const QLatin1String RowHeight("30");
const QLatin1String ImageHeaderData("ImageFile");

bool IsSameVolume(const TargetRow& left, const TargetRow& right)
{
    return left.disk.number == right.disk.number && left.startSector == right.startSector;
}

std::unique_ptr<DiskRows::Row> MakeRow()
{
    auto row = std::make_unique<DiskRows::Row>();
    row->SetAttribute(QStringLiteral("height"), RowHeight);
    return row;
}

bool IsRemovableVolume(const DiskRows::Row& row)
{
    const RecoveryTarget* target = DiskRows::TargetOf(row);
    return target != nullptr && !target->IsImage() && target->volume->disk.removable;
}

}  // namespace

void DiskRows::AddArrived(const std::vector<TargetRow>& found, bool selectsRemovable)
{
    m_knownVolumes = found;
    std::set<std::uint32_t> listed;
    for (const Disk& disk : m_disks) {
        listed.insert(disk.facts.number);
    }
    for (const TargetRow& volume : found) {
        if (listed.contains(volume.disk.number)) {
            continue;
        }
        const Row& row = AddVolume(volume);
        if (volume.disk.removable && selectsRemovable) {
            Select(row);
        }
    }
}

void DiskRows::RemoveMissing(const std::vector<TargetRow>& found)
{
    for (const TargetRow& known : m_knownVolumes) {
        const bool isThere = std::any_of(found.begin(), found.end(), [&](const TargetRow& volume) {
            return IsSameVolume(volume, known);
        });
        if (!isThere && FindDisk(known.disk.number) != nullptr) {
            RemoveDisk(known.disk.number);
        }
    }
    m_knownVolumes = found;
}

void DiskRows::RemoveDisk(std::uint32_t number)
{
    CListExUI::Node* header = FindDisk(number)->header->GetNode();
    std::vector<const RecoveryTarget*> released;
    for (const CListExUI::Node* child : header->Children) {
        const auto row = std::find(m_rows.begin(), m_rows.end(), child->Row);
        released.push_back(TargetOf(**row));
        m_rows.erase(row);
    }
    m_list.RemoveNode(header, true);
    std::erase_if(m_disks, [number](const Disk& disk) { return disk.facts.number == number; });
    for (const RecoveryTarget* target : released) {
        Release(target);
    }
}

void DiskRows::Release(const RecoveryTarget* target)
{
    if (onRelease) {
        onRelease(*target);
    }
    std::erase_if(m_state.targets, [target](const auto& own) { return own.get() == target; });
}

RecoveryTarget& DiskRows::AddTarget()
{
    return *m_state.targets.emplace_back(std::make_unique<RecoveryTarget>());
}

DiskRows::Row*
DiskRows::AddRow(std::unique_ptr<Row> row, CListExUI::Node* parent, CListExUI::Node* behind)
{
    Row* added = row.get();
    m_list.AddNode(std::move(row), parent, behind);
    return added;
}

const DiskRows::Disk* DiskRows::FindDisk(std::uint32_t number) const
{
    const auto found = std::find_if(m_disks.begin(), m_disks.end(), [number](const Disk& disk) {
        return disk.facts.number == number;
    });
    return found == m_disks.end() ? nullptr : &*found;
}

DiskRows::Row& DiskRows::HeaderOf(const DiskFacts& disk)
{
    if (const Disk* found = FindDisk(disk.number)) {
        return *found->header;
    }
    auto row = MakeRow();
    row->SetTag(disk.number);
    row->SetText(DiskHeaderText(disk));
    row->SetToolTip(ToolTipOf(disk));
    m_disks.push_back({disk, AddRow(std::move(row), nullptr)});
    return *m_disks.back().header;
}

DiskRows::Row& DiskRows::AddVolume(const TargetRow& volume)
{
    RecoveryTarget& target = AddTarget();
    target.volume = volume;
    CListExUI::Node* header = HeaderOf(volume.disk).GetNode();
    auto row = MakeRow();
    row->SetTag(TagOf(&target));
    row->SetIcon(volume.disk.removable ? QStringLiteral("file='drive_usb.png' dest='28,0,50,24'")
                                       : QStringLiteral("file='drive.png' dest='28,0,50,24'"));
    WriteTexts(*row, target);
    m_rows.push_back(AddRow(std::move(row), header));
    return *m_rows.back();
}

DiskRows::Row& DiskRows::AddImage(const std::filesystem::path& path)
{
    if (m_imageHeader == nullptr) {
        auto header = MakeRow();
        header->SetUserData(ImageHeaderData);
        header->SetText(ImageHeaderText());
        m_imageHeader = AddRow(std::move(header), nullptr);
    }
    RecoveryTarget& target = AddTarget();
    target.imagePath = path;
    target.imageId = ++m_nextImageId;
    auto row = MakeRow();
    row->SetTag(TagOf(&target));
    row->SetIcon(QStringLiteral("file='image_file.png' dest='26,0,50,24'"));
    WriteTexts(*row, target);
    m_rows.push_back(AddRow(std::move(row), m_imageHeader->GetNode()));
    Row& added = *m_rows.back();
    if (onImage) {
        onImage(target);
    }
    return added;
}

DiskRows::Row* DiskRows::FindImage(char16_t id) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [id](const Row* row) {
        const RecoveryTarget& target = *TargetOf(*row);
        return target.imageId == id && !target.volume;
    });
    return found == m_rows.end() ? nullptr : *found;
}

bool DiskRows::AddParts(char16_t imageId, const TargetParts& parts)
{
    Row* const row = FindImage(imageId);
    if (row == nullptr) {
        return false;
    }
    RecoveryTarget& image = *TargetOf(*row);
    if (parts.rows.empty()) {
        image.imageFileSystem = parts.whole.fileSystem;
        WriteTexts(*row, image);
    }
    CListExUI::Node* behind = row->GetNode();
    for (const TargetRow& part : parts.rows) {
        if (m_nextPartId > m_nextImageId) {
            behind = AddPart(image, part, behind).GetNode();
        }
    }
    return true;
}

DiskRows::Row&
DiskRows::AddPart(const RecoveryTarget& image, const TargetRow& part, CListExUI::Node* behind)
{
    RecoveryTarget& target = AddTarget();
    target.volume = part;
    target.imagePath = image.imagePath;
    target.imageId = m_nextPartId--;
    auto row = MakeRow();
    row->SetTag(TagOf(&target));
    row->SetIcon(QStringLiteral("file='drive.png' dest='48,0,70,24'"));
    WriteTexts(*row, target);
    m_rows.push_back(AddRow(std::move(row), m_imageHeader->GetNode(), behind));
    return *m_rows.back();
}

void DiskRows::WriteTexts(Row& row, const RecoveryTarget& target)
{
    row.SetToolTip(ToolTipOf(target));
    if (!target.volume) {
        row.SetColumnText(0, CellText(target.imagePath.filename().string()));
        row.SetColumnText(2, CellText(FormatBytes(ImageBytes(target))));
        return;
    }
    row.SetColumnText(0, target.IsPartOfImage() ? ImagePartNameText(*target.volume)
                                                : VolumeNameText(*target.volume));
    row.SetColumnText(1, CellText(target.volume->fileSystem));
    row.SetColumnText(2, CellText(FormatBytes(target.volume->totalBytes)));
}

void DiskRows::RewriteTexts()
{
    for (const Disk& disk : m_disks) {
        disk.header->SetText(DiskHeaderText(disk.facts));
        disk.header->SetToolTip(ToolTipOf(disk.facts));
    }
    if (m_imageHeader != nullptr) {
        m_imageHeader->SetText(ImageHeaderText());
    }
    for (Row* row : m_rows) {
        WriteTexts(*row, *TargetOf(*row));
    }
}

void DiskRows::ApplyMode(bool createsImages)
{
    if (m_imageHeader != nullptr) {
        const CListExUI::Node* header = m_imageHeader->GetNode();
        m_imageHeader->SetVisible(!createsImages);
        for (const CListExUI::Node* child : header->Children) {
            child->Row->SetVisible(!createsImages && header->ChildVisible);
        }
    }
    int removable = -1;
    for (int i = 0; i < m_list.GetCount() && removable < 0; ++i) {
        const auto* row = dynamic_cast<const Row*>(m_list.GetItemAt(i));
        removable = row != nullptr && IsRemovableVolume(*row) ? i : -1;
    }
    if (removable > 0) {
        m_list.SelectItem(removable);
    } else if (removable < 0 && m_list.GetCount() >= 2) {
        m_list.SelectItem(1);
    }
}

const DiskRows::Row* DiskRows::CurrentRow() const
{
    return dynamic_cast<const Row*>(m_list.GetItemAt(m_list.GetCurSel()));
}

RecoveryTarget* DiskRows::TargetOf(const Row& row)
{
    return row.GetNode() != nullptr && row.GetNode()->Level == 0
               ? nullptr
               : PointerOf<RecoveryTarget>(row.GetTag());
}

RecoveryTarget* DiskRows::CurrentTarget() const
{
    const Row* row = CurrentRow();
    return row != nullptr ? TargetOf(*row) : nullptr;
}

std::vector<RecoveryTarget*> DiskRows::CurrentTargets() const
{
    const Row* row = CurrentRow();
    if (row == nullptr) {
        return {};
    }
    if (RecoveryTarget* target = TargetOf(*row)) {
        return {target};
    }
    std::vector<RecoveryTarget*> targets;
    for (const CListExUI::Node* child : row->GetNode()->Children) {
        auto* target = PointerOf<RecoveryTarget>(child->Row->GetTag());
        if (!target->IsPartOfImage()) {
            targets.push_back(target);
        }
    }
    return targets;
}

const DiskFacts* DiskRows::CurrentDisk() const
{
    const Row* row = CurrentRow();
    const auto found = std::find_if(m_disks.begin(), m_disks.end(),
                                    [row](const Disk& disk) { return disk.header == row; });
    return row == nullptr || found == m_disks.end() ? nullptr : &found->facts;
}

const DiskRows::Row* DiskRows::FirstScanned() const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [](const Row* row) {
        return TargetOf(*row)->engine != nullptr;
    });
    return found == m_rows.end() ? nullptr : *found;
}

std::vector<RecoveryTarget*> DiskRows::Scanned() const
{
    std::vector<RecoveryTarget*> targets;
    for (const Row* row : m_rows) {
        if (RecoveryTarget* target = TargetOf(*row); target->engine != nullptr) {
            targets.push_back(target);
        }
    }
    return targets;
}
