#include "cli/Words.h"

#include "cli/TextForms.h"
#include "platform/ResultCode.h"

namespace {

Refusal TargetRefused(const std::string& sentence)
{
    return {ExitStatus::TargetFailed, sentence};
}

Refusal WrongUse(const std::string& sentence)
{
    return {ExitStatus::WrongUse, sentence};
}

Refusal WhyNotOpenedBy(const std::string& name, ResultCode why, bool isImage)
{
    switch (why) {
    case ResultFileNotFound:
    case ResultPathNotFound:
        return TargetRefused(
            name + ": there is no such file or device; give the path of an image file, a block "
                   "device such as /dev/sdb1, or a number that 'lumivault-cli targets' shows.");
    case ResultAccessDenied:
        return TargetRefused(
            name + ": you are not permitted to read it; run the command with the rights to read "
                   "the device, for example with sudo.");
    case ResultNotSupported:
        return TargetRefused(
            name + ": you are not permitted to read it, and nothing can ask for an "
                   "administrator's password, since pkexec (package pkexec) or this program's "
                   "helper for it is not installed; run the command with sudo.");
    case ResultShortRead:
        return TargetRefused(
            name + ": it is shorter than 16 KB, so it holds no volume; check that the image was "
                   "copied whole.");
    default:
        return TargetRefused(
            name + ": it cannot be read: " + ErrorText(why) +
            (isImage ? " Check the medium that the file lies on."
                     : " Check the cable and the medium, or copy what can be read to an image with "
                       "'image --rescue' and scan that."));
    }
}

}  // namespace

Refusal WhyNot(const TargetRefusal& refusal)
{
    const std::string name = Printable(refusal.name);
    switch (refusal.fault) {
    case TargetFault::NotANumber:
        return WrongUse(name + " is no target; give # and a number that 'lumivault-cli "
                               "targets' shows, such as '#3'.");
    case TargetFault::NoSuchNumber:
        return TargetRefused("there is no target #" + std::to_string(refusal.number) +
                             "; 'lumivault-cli targets' lists those that there are.");
    case TargetFault::NoSuchPart:
        return TargetRefused(name + " has no part #" + std::to_string(refusal.number) +
                             "; 'lumivault-cli targets " + name + "' lists those that there are.");
    case TargetFault::NoMedium:
        return TargetRefused(name + ": it holds no medium; put one in and try again.");
    case TargetFault::TooManyDisks:
        return TargetRefused(name + ": there are too many disks.");
    case TargetFault::LessThanASector:
        return TargetRefused(name +
                             ": it has less than one sector of its disk, so there is nothing in "
                             "it; give another partition, or the whole disk.");
    case TargetFault::NotScannable:
        return TargetRefused(
            name + ": it is neither a file nor a block device; give an image file or a device.");
    case TargetFault::UnknownFileSystem:
        return TargetRefused(
            name + ": no file system that a quick scan can read was found at its start; leave out "
                   "--fast to look for files by their content.");
    case TargetFault::OutOfMemory:
        return WhyBroken(ResultOutOfMemory);
    case TargetFault::CannotBeOpened:
    case TargetFault::None:
        break;
    }
    return WhyNotOpenedBy(name, refusal.why, refusal.isImage);
}

Refusal WhyNot(const LockOutcome& lock)
{
    const std::string name = Printable(lock.folder.string());
    if (lock.end == LockEnd::HeldElsewhere) {
        return WrongUse("another scan uses " + name +
                        "; wait for its end, or give this one a folder of its "
                        "own with --data-dir.");
    }
    if (lock.end == LockEnd::FolderIsLink) {
        return WrongUse(name +
                        " is a link, and scan records are not kept behind one; remove it, or "
                        "give the folder itself with --data-dir.");
    }
    return WrongUse(
        "the folder for scan records, " + name +
        (lock.end == LockEnd::CannotMakeFolder ? ", cannot be made: " : ", cannot be written: ") +
        ErrorText(lock.why) + " Give another one with --data-dir.");
}

Refusal WhyNot(const DestinationCheck& check, const std::filesystem::path& folder)
{
    const std::string name = Printable(folder.string());
    switch (check.fault) {
    case DestinationFault::OnSource:
        return WrongUse(
            name + " lies on the source itself, where restored files would overwrite deleted ones; "
                   "choose a folder on another disk, or give --force if that is wanted.");
    case DestinationFault::MayBeOnSource:
        return WrongUse("the system does not tell whether " + name +
                        " lies on the source itself; choose a folder on another disk, or give "
                        "--force if you know that it does not.");
    case DestinationFault::NotWritable:
        return WrongUse(name + " cannot be written; choose a folder that you may write to.");
    case DestinationFault::CannotBeMade:
    case DestinationFault::None:
        break;
    }
    return WrongUse(name + " cannot be made: " + ErrorText(check.why) + " Choose another folder.");
}

Refusal WhyNot(const ImageProblem& problem, const ImageTask& image, const std::string& source)
{
    const std::string name = Printable(image.File().string());
    switch (problem.fault) {
    case ImageFault::SourceIsImage:
        return WrongUse(Printable(source) +
                        " is a file, which can be scanned as it is; give a disk, a partition or a "
                        "number that 'lumivault-cli targets' shows.");
    case ImageFault::NoName:
        return WrongUse("FILE is empty; give a name for the image.");
    case ImageFault::NoFolder:
        return WrongUse(name + " lies in no folder that exists; make the folder first.");
    case ImageFault::NotPlainFile:
        return WrongUse(name +
                        " is no plain file; an image is never written to a device, a link or a "
                        "folder. Choose another name.");
    case ImageFault::Exists:
        return WrongUse(name + " exists; choose another name, or give --force to write over it.");
    case ImageFault::OnSource:
        return WrongUse(name + " lies on the source itself, where it would overwrite what is to be "
                               "recovered; choose a folder on another disk.");
    case ImageFault::MayBeOnSource:
        return WhyNot(DestinationCheck{DestinationFault::MayBeOnSource}, image.File());
    case ImageFault::TooLargeForFat32:
        return WrongUse(name + " would be larger than the 4 GB that a file may have there (" +
                        problem.fileSystem + "); choose a folder on another file system.");
    case ImageFault::TooLargeForFat:
        return WrongUse(name + " would be larger than the 2 GB that an image may have there (" +
                        problem.fileSystem + "); choose a folder on another file system.");
    case ImageFault::NoRoom:
        break;
    }
    return WrongUse(name + " needs more than the " + SizeText(problem.freeBytes) +
                    " that are free there, since the source has " + SizeText(image.SourceBytes()) +
                    "; choose a folder with more room.");
}

Refusal WhyNot(const DestinationRoom& room, const std::filesystem::path& folder)
{
    return WrongUse("the files need " + SizeText(room.neededBytes) + ", and " +
                    Printable(folder.string()) + " has " + SizeText(room.freeBytes) +
                    " free; choose a folder with more room or fewer types, or give --force to "
                    "restore as many as fit.");
}

Refusal WhyNoRecordsIn(const std::filesystem::path& folder)
{
    return WrongUse("scan records would be written to " + Printable(folder.string()) +
                    ", which lies on the source itself, and may overwrite deleted files; give a "
                    "folder on another disk with --data-dir DIR.");
}

std::variant<TypeFilter, Refusal> FilterOf(const std::string& list)
{
    std::string wrong;
    if (std::optional<TypeFilter> filter = TypeFilter::Parse(list, &wrong)) {
        return std::move(*filter);
    }
    const std::string shown = Printable(wrong);
    if (shown.empty() || shown.find_first_of("./\\|*?") != std::string::npos) {
        return WrongUse("'" + Printable(list) +
                        "' is no list of types; give extensions and families with commas between "
                        "them, such as --types photo,pdf, or --types all.");
    }
    return WrongUse(
        "'" + shown + "' is no type. Types are " + TypeFilter::KnownTypes() +
        ". An extension that is none of these goes with a full stop in front: --types ." + shown +
        ".");
}

Refusal WhyBroken(ResultCode fault)
{
    return TargetRefused(fault == ResultOutOfMemory
                             ? "there is not enough memory; close other programs, or ask for fewer "
                               "types."
                             : ErrorText(fault));
}

namespace {

std::string AName(const TargetContent& content)
{
    return "This is " + content.fileSystem;
}

}  // namespace

std::string WordsFor(const TargetContent& content, bool isQuick)
{
    const std::string found = isQuick ? "a quick scan finds nothing there; without --fast files "
                                        "come back by their content, without names and folders."
                                      : "files come back by their content alone, without names and "
                                        "folders.";
    switch (content.kind) {
    case ContentKind::NotUnderstood:
        return AName(content) + ", which is recognised and not understood: " + found;
    case ContentKind::Encrypted:
        return AName(content) + ", an encrypted volume: nothing in it can be recognised. Unlock "
                                "it, and scan the device that the system shows for it then.";
    case ContentKind::Swap:
        return AName(content) + ": pieces of files may come back by their content, seldom whole "
                                "ones.";
    case ContentKind::VolumeGroup:
        return AName(content) +
               ", a part of a volume group: scan the volumes that the system "
               "shows for it; here " +
               found;
    case ContentKind::Array:
        return AName(content) +
               ", a part of an array of disks: scan the device that the system "
               "shows for the array; here " +
               found;
    case ContentKind::Unknown:
    case ContentKind::Understood:
        break;
    }
    return {};
}

Refusal WhyNotQuick(const TargetRefusal& refusal, const TargetContent& content)
{
    const std::string words = WordsFor(content, true);
    return words.empty() ? WhyNot(refusal) : TargetRefused(Printable(refusal.name) + ": " + words);
}

std::string WhatElse(const CommandOptions& options)
{
    return options.whole ? std::string()
                         : std::string(" --whole ") + (options.fast ? "in place of --fast " : "") +
                               "reads every sector, whatever the tables of the file system say.";
}

std::string_view KindName(TargetKind kind)
{
    switch (kind) {
    case TargetKind::Partition:
        return "partition";
    case TargetKind::Gap:
        return "gap";
    case TargetKind::Disk:
        break;
    }
    return "disk";
}

std::string NameOfPart(const TargetRow& row)
{
    return "Part " + std::to_string(unsigned{row.number}) + " (" + std::string(KindName(row.kind)) +
           (row.fileSystem.empty() ? "" : ", " + Printable(row.fileSystem)) + ", " +
           SizeText(row.sectorCount * row.disk.sectorSize) + ")";
}

std::string WhatWentWrong(const FileOutcome& outcome)
{
    const std::string missing = std::to_string(outcome.Missing()) + " of " +
                                CountText(outcome.size, "byte") + " are missing.";
    const std::string damage = outcome.IsDamaged() ? " Damaged: " + missing : std::string();
    switch (outcome.end) {
    case FileEnd::Incomplete:
        return "Incomplete: " + missing;
    case FileEnd::Failed:
        if (outcome.claimsTooMuch) {
            return "The file claims to be longer than the source goes on." + damage;
        }
        return ErrorText(outcome.why) + damage;
    case FileEnd::Cancelled:
        return "Cancelled before its end." + damage;
    case FileEnd::Restored:
    case FileEnd::NotTried:
        break;
    }
    return {};
}

std::string_view StateOf(const FileOutcome& outcome)
{
    switch (outcome.end) {
    case FileEnd::Restored:
        return outcome.wasThere ? "skipped" : "restored";
    case FileEnd::Incomplete:
        return "incomplete";
    case FileEnd::Failed:
    case FileEnd::Cancelled:
        return outcome.IsDamaged() ? "damaged" : "failed";
    case FileEnd::NotTried:
        break;
    }
    return "notTried";
}

std::string StateOf(const EarlierScan& scan)
{
    if (scan.gone) {
        return "gone";
    }
    switch (scan.state) {
    case EarlierState::Stopped:
        return "stopped at " + std::to_string(scan.percent) + " %";
    case EarlierState::Killed:
        return "killed at " + std::to_string(scan.percent) + " %";
    case EarlierState::Complete:
        break;
    }
    return scan.unreadSectors == 0 ? "complete" : "incomplete";
}

std::string DescribeScan(const EarlierScan& scan)
{
    return StateOf(scan) + ", " + TimeText(scan.savedAt) + ", " + CountText(scan.files, "file");
}
