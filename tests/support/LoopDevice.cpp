#include "tests/support/LoopDevice.h"

#include "tests/support/Bytes.h"
#include "tests/support/RunCommand.h"

#include <chrono>
#include <fstream>
#include <thread>
#include <utility>

namespace {

std::string WithoutLineEnd(std::string text)
{
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

}  // namespace

std::string LoopDevice::WhyNot()
{
    if (const std::string missing = MissingTool({"losetup", "partx", "sfdisk"}); !missing.empty()) {
        return missing;
    }
    const TempFolder folder;
    const ImageFile image(folder / "probe", 1 << 20);
    const CommandResult tried = RunCommand({"losetup", "-f", "--show", folder / "probe"});
    if (tried.exitStatus != 0) {
        return "loop devices cannot be had here: " + WithoutLineEnd(tried.err);
    }
    (void)RunCommand({"losetup", "-d", WithoutLineEnd(tried.out)});
    return {};
}

LoopDevice::LoopDevice(const std::filesystem::path& image, std::uint32_t sectorSize)
    : m_node(WithoutLineEnd(
          MustRun({"losetup", "-f", "--show", "-b", std::to_string(sectorSize), image})))
{
}

LoopDevice::~LoopDevice()
{
    if (m_hasPartitions) {
        (void)RunCommand({"partx", "-d", m_node});
    }
    (void)RunCommand({"losetup", "-d", m_node});
}

void LoopDevice::AddPartitionNodes()
{
    (void)RunCommand({"partx", "-d", m_node});  // what a test that was killed has left
    MustRun({"partx", "-a", m_node});
    m_hasPartitions = true;
}

std::filesystem::path LoopDevice::PartitionNode(int number) const
{
    return m_node.string() + "p" + std::to_string(number);
}

Mount::Mount(std::vector<std::string> command, std::filesystem::path folder)
    : m_folder(std::move(folder))
{
    std::filesystem::create_directories(m_folder);
    command.push_back(m_folder);
    MustRun(command);
}

// A program that mounts by itself goes on using the device for a moment after the answer.
Mount::~Mount()
{
    for (int i = 0; i < 50 && RunCommand({"umount", m_folder}).exitStatus == 32; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void MakeTable(const std::filesystem::path& disk, const std::string& script)
{
    const TempFolder folder;
    std::ofstream(folder / "script") << script;
    MustRun({"sh", "-c", "PATH=$PATH:/usr/sbin:/sbin sfdisk -q \"$0\" < \"$1\"", disk,
             folder / "script"});
}
