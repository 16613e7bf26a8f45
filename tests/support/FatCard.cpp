#include "tests/support/FatCard.h"

#include "tests/support/Bytes.h"
#include "tests/support/RunCommand.h"

#include <utility>

namespace {

std::string InVolume(const std::string& path)
{
    return "::/" + path;
}

}  // namespace

std::string FatCard::MissingTools()
{
    return MissingTool({"mkfs.fat", "mcopy", "mdeltree"});
}

FatCard::FatCard(std::filesystem::path imagePath, const FatOptions& options)
    : m_imagePath(std::move(imagePath)),
      m_drive(m_imagePath.string() + "@@" + std::to_string(options.startByte))
{
    const ImageFile image(m_imagePath, options.startByte + options.volumeBytes + options.tailBytes);
    std::vector<std::string> command = {"mkfs.fat",
                                        "-F",
                                        std::to_string(options.fatBits),
                                        "-S",
                                        std::to_string(options.sectorSize),
                                        "-s",
                                        std::to_string(options.sectorsPerCluster),
                                        "--offset=" +
                                            std::to_string(options.startByte / options.sectorSize)};
    command.insert(command.end(), options.extra.begin(), options.extra.end());
    command.push_back(m_imagePath.string());
    command.push_back(std::to_string(options.volumeBytes / 1024));
    MustRun(command);
}

std::string FatCard::Run(std::vector<std::string> command) const
{
    command.insert(command.begin() + 1, {"-i", m_drive});
    // mtools refuses small or odd volumes unless told; the fixed time zone keeps equal runs equal.
    return MustRun(command, {"MTOOLS_SKIP_CHECK=1", "TZ=UTC"});
}

void FatCard::MakeFolder(const std::string& path) const
{
    Run({"mmd", InVolume(path)});
}

void FatCard::Put(const std::string& path, std::span<const std::uint8_t> bytes) const
{
    const TempFolder folder;
    WriteFileBytes(folder / "file", bytes);
    PutFile(path, folder / "file");
}

void FatCard::PutFile(const std::string& path, const std::filesystem::path& from) const
{
    Run({"mcopy", "-o", "-m", from.string(), InVolume(path)});
}

ByteVector FatCard::Get(const std::string& path) const
{
    const std::string text = Run({"mcopy", InVolume(path), "-"});
    return {text.begin(), text.end()};
}

void FatCard::Delete(const std::string& path) const
{
    Run({"mdel", InVolume(path)});
}

void FatCard::DeleteTree(const std::string& path) const
{
    Run({"mdeltree", InVolume(path)});
}
