// lumivault-cli image: copies a disk or a part of it into a file.
#include "cli/Cancel.h"
#include "cli/ProgressLine.h"
#include "cli/TargetResolver.h"
#include "cli/TextForms.h"
#include "storage/DiskHelpers.h"
#include "storage/RawDiskCopier.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

namespace {

constexpr std::uint64_t GiB = std::uint64_t{1} << 30;

void AddOptions(CLI::App& app, CommandOptions& options)
{
    AddTargetOption(app, options);
    app.add_option("FILE", options.imageFile, "the image to make, on another disk")->required();
    app.add_flag("--force", options.force,
                 "write over a file that exists, and to a folder of which the system does not tell "
                 "whether it lies on the source");
}

Refusal WrongUse(const std::string& sentence)
{
    return {ExitStatus::WrongUse, sentence};
}

// One run of the command.
class Imaging
{
public:
    Imaging(const CommandOptions& options, CommandStreams& streams)
        : m_options(options),
          m_streams(streams),
          m_line(streams.err, streams.errIsTerminal && !options.quiet)
    {
    }

    ExitStatus Run();

private:
    std::optional<Refusal> Check();
    std::optional<Refusal> CheckFile() const;
    std::optional<Refusal> CheckPlace() const;
    ExitStatus Tell(ResultCode result);
    std::string Sectors(std::uint64_t count) const;
    static ResultCode OnProgress(void* context,
                                 std::int32_t percent,
                                 std::uint64_t sectorsDone,
                                 std::uint64_t sectorsTotal,
                                 std::int32_t secondsLeft);

    const CommandOptions& m_options;
    CommandStreams& m_streams;
    ProgressLine m_line;
    CancelScope m_cancel;
    ScanTarget m_target;
    std::filesystem::path m_file;
    std::uint64_t m_sourceBytes = 0;
    RawDiskCopier m_copier;
};

std::string Imaging::Sectors(std::uint64_t count) const
{
    return CountText(count, "sector") + " (" + SizeText(count * m_copier.SectorSize) + ")";
}

std::optional<Refusal> Imaging::Check()
{
    if (std::optional<Refusal> refusal = ResolveTarget(m_options.target, m_target)) {
        return refusal;
    }
    if (!m_target.IsVolume()) {
        return WrongUse(Printable(m_options.target) +
                        " is a file, which can be scanned as it is; give a disk, a partition or a "
                        "number that 'lumivault-cli targets' shows.");
    }
    m_sourceBytes = m_target.Volume->SectorCount * SectorSizeOf(*m_target.Volume);
    if (m_options.imageFile.empty()) {
        return WrongUse("FILE is empty; give a name for the image.");
    }
    std::error_code ignored;
    m_file = std::filesystem::absolute(m_options.imageFile, ignored).lexically_normal();
    if (std::optional<Refusal> refusal = CheckFile()) {
        return refusal;
    }
    return CheckPlace();
}

// The file itself: only ever a plain one, and none that the user does not want to lose.
std::optional<Refusal> Imaging::CheckFile() const
{
    const std::string name = Printable(m_file.string());
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::symlink_status(m_file, ignored);
    if (!std::filesystem::is_directory(m_file.parent_path(), ignored)) {
        return WrongUse(name + " lies in no folder that exists; make the folder first.");
    }
    if (!std::filesystem::exists(status)) {
        return std::nullopt;
    }
    if (!std::filesystem::is_regular_file(status)) {
        return WrongUse(name +
                        " is no plain file; an image is never written to a device, a link or a "
                        "folder. Choose another name.");
    }
    if (!m_options.force && !Ask(name + " exists. Write over it?", m_streams)) {
        return WrongUse(name + " exists; choose another name, or give --force to write over it.");
    }
    return std::nullopt;
}

// Where it goes: not onto the source, and only where there is room for it.
std::optional<Refusal> Imaging::CheckPlace() const
{
    const std::string name = Printable(m_file.string());
    const Touching touching = PathTouchesTarget(m_file, m_target);
    if (touching == Touching::Yes) {
        return WrongUse(name + " lies on the source itself, where it would overwrite what is to be "
                               "recovered; choose a folder on another disk.");
    }
    if (touching == Touching::Unknown && !m_options.force &&
        !Ask("The system does not tell whether " + name +
                 " lies on the source itself. Write it there all the same?",
             m_streams)) {
        return WrongUse("the system does not tell whether " + name +
                        " lies on the source itself; choose a folder on another disk, or give "
                        "--force if you know that it does not.");
    }
    std::string fileSystem = GetFileSystemName(m_file.parent_path());
    std::transform(fileSystem.begin(), fileSystem.end(), fileSystem.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    if (fileSystem.find("FAT32") != std::string::npos && m_sourceBytes > 4 * GiB) {
        return WrongUse(name + " would be larger than the 4 GB that a file may have there (" +
                        fileSystem + "); choose a folder on another file system.");
    }
    // FAT32 is meant too: larger images than this are not put on any of the family.
    if (fileSystem.find("FAT") != std::string::npos && m_sourceBytes > 2 * GiB) {
        return WrongUse(name + " would be larger than the 2 GB that an image may have there (" +
                        fileSystem + "); choose a folder on another file system.");
    }
    std::uint64_t freeBytes = 0;
    if (GetFreeBytes(m_file.parent_path(), &freeBytes) == ResultSuccess &&
        m_sourceBytes >= freeBytes) {
        return WrongUse(name + " needs more than the " + SizeText(freeBytes) +
                        " that are free there, since the source has " + SizeText(m_sourceBytes) +
                        "; choose a folder with more room.");
    }
    return std::nullopt;
}

ResultCode Imaging::OnProgress(void* context,
                               std::int32_t percent,
                               std::uint64_t sectorsDone,
                               std::uint64_t sectorsTotal,
                               std::int32_t secondsLeft)
{
    auto& imaging = *static_cast<Imaging*>(context);
    if (CancelScope::Requested()) {
        return ResultCancelled;
    }
    if (imaging.m_line.IsDue()) {
        imaging.m_line.Show(
            "Copying: " + std::to_string(percent) + "%" +
            (secondsLeft >= 0 ? ", " + DurationText(secondsLeft) + " left" : std::string()) + ", " +
            std::to_string(sectorsDone) + " of " + std::to_string(sectorsTotal) + " sectors");
    }
    return ResultSuccess;
}

ExitStatus Imaging::Run()
{
    if (const std::optional<Refusal> refusal = Check()) {
        return Refuse(*refusal, m_streams);
    }
    std::uint64_t sizeBefore = 0;
    if (GetFileSize(m_file, &sizeBefore) != ResultSuccess) {
        sizeBefore = 0;  // not there yet
    }
    const VolumeRecord& volume = *m_target.Volume;
    const ResultCode result = m_copier.Copy(volume.DiskNumber, volume.StartSector,
                                            volume.SectorCount, m_file, &OnProgress, this);
    m_line.Clear();
    const std::uint64_t written = m_copier.WrittenSectors * m_copier.SectorSize;
    if (sizeBefore > written && written != 0 && !m_options.quiet) {
        m_streams.err << "Note: the file was longer before; what stood in it behind byte "
                      << written << " is still there.\n";
    }
    return Tell(result);
}

ExitStatus Imaging::Tell(ResultCode result)
{
    const std::string name = Printable(m_file.string());
    if (result == ResultSuccess) {
        if (!m_options.quiet) {
            m_streams.out << Sectors(m_copier.WrittenSectors) << " copied into " << name << ".\n";
        }
        return ExitStatus::Done;
    }
    const std::string kept = m_copier.WrittenSectors == 0
                                 ? "Nothing was copied."
                                 : "The " + Sectors(m_copier.WrittenSectors) +
                                       " that were read before stand in " + name +
                                       ", which can be scanned.";
    if (result == ResultCancelled) {
        m_streams.err << "Cancelled. " << kept << '\n';
        return ExitStatus::Cancelled;
    }
    if (result == ResultReadFault) {
        return Refuse({ExitStatus::TargetFailed, "the disk could not be read at sector " +
                                                     std::to_string(m_copier.FailedSector) + ". " +
                                                     kept},
                      m_streams);
    }
    if (!m_copier.SourceOpened) {
        return Refuse(WhyNotOpened(m_options.target, result), m_streams);
    }
    return Refuse({ExitStatus::TargetFailed, name + ": " + ErrorText(result) + " " + kept},
                  m_streams);
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams)
{
    return Imaging(options, streams).Run();
}

}  // namespace

const Command ImageCommand = {"image", "copy a disk, a partition or a gap into an image file",
                              "  sudo lumivault-cli image /dev/sdb ./card.img\n"
                              "  sudo lumivault-cli image '#3' ./card.img\n"
                              "  lumivault-cli recover card.img ./recovered\n",
                              &AddOptions, &Run};
