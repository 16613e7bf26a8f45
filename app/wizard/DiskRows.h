// The rows of the list of disks and the targets that they stand for: what is listed, what comes and goes, images, and which
// rows a mode shows.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "session/TargetParts.h"
#include "ui/custom/DiskListUI.h"

#include <functional>
#include <optional>
#include <vector>

class DiskRows
{
public:
    using Row = CListImageTextNodeUI;

    DiskRows(CDiskListUI& list, RecoveryState& state) : m_list(list), m_state(state) {}

    // Told of a target before it goes.
    std::function<void(const RecoveryTarget& target)> onRelease;
    // Told of an image that is listed; whoever hears of it may come back with its parts.
    std::function<void(const RecoveryTarget& image)> onImage;

    // Disks that have no rows yet get them; a removable one's are selected, if asked.
    void AddArrived(const std::vector<TargetRow>& found, bool selectsRemovable);
    // A disk that lost one of its entries goes with all of its rows.
    void RemoveMissing(const std::vector<TargetRow>& found);
    Row& AddImage(const std::filesystem::path& path);
    // After the row of the image, which stays what it is: all of it in one piece. False when there is none with that number.
    bool AddParts(char16_t imageId, const TargetParts& parts);
    void Select(const Row& row) { m_list.SelectItem(m_list.GetItemIndex(&row)); }

    // Shows images or not, and selects what is most likely meant.
    void ApplyMode(bool createsImages);
    // In the language that is chosen by now.
    void RewriteTexts();

    bool HasCurrent() const { return CurrentRow() != nullptr; }
    // Null for a header, and without a current row.
    RecoveryTarget* CurrentTarget() const;
    // The current row's, or those of all rows below a header, in their order. Of images themselves alone: their parts are in
    // them.
    std::vector<RecoveryTarget*> CurrentTargets() const;
    // Of the current row, when it is the header of a disk.
    const DiskFacts* CurrentDisk() const;
    // The first row, in the order of their making, whose target was scanned; null when there is none.
    const Row* FirstScanned() const;
    // All that were scanned, in the same order.
    std::vector<RecoveryTarget*> Scanned() const;
    static RecoveryTarget* TargetOf(const Row& row);

private:
    struct Disk
    {
        DiskFacts facts;
        Row* header = nullptr;
    };

    const Row* CurrentRow() const;
    const Disk* FindDisk(std::uint32_t number) const;
    Row*
    AddRow(std::unique_ptr<Row> row, CListExUI::Node* parent, CListExUI::Node* behind = nullptr);
    Row* FindImage(char16_t id) const;
    Row& AddPart(const RecoveryTarget& image, const TargetRow& part, CListExUI::Node* behind);
    Row& HeaderOf(const DiskFacts& disk);
    Row& AddVolume(const TargetRow& volume);
    RecoveryTarget& AddTarget();
    void RemoveDisk(std::uint32_t number);
    void Release(const RecoveryTarget* target);
    static void WriteTexts(Row& row, const RecoveryTarget& target);

    CDiskListUI& m_list;
    RecoveryState& m_state;
    std::vector<Row*> m_rows;   // partitions and images, in the order of their making
    std::vector<Disk> m_disks;  // with a header
    Row* m_imageHeader = nullptr;
    std::uint16_t m_nextImageId = 1000;  // counted up before its use, never back
    std::uint16_t m_nextPartId =
        0xFFFE;  // counted down, so that images have the numbers that they would have without it
    std::vector<TargetRow> m_knownVolumes;  // as last listed
};
