#include "tests/support/MadeUpSystem.h"

#include "platform/SystemFiles.h"
#include "storage/DriveRegistry.h"
#include "tests/support/Bytes.h"

#include <fstream>

namespace fs = std::filesystem;

MadeUpSystem::MadeUpSystem()
{
    fs::create_directories(m_root / "sys/block");
    fs::create_directories(m_root / "dev");
    Write("proc/self/mountinfo", "");
    SetSystemRoot(m_root.Path());
}

MadeUpSystem::~MadeUpSystem()
{
    SetSystemRoot({});
    for (std::uint32_t number = 0; number < DriveRegistry::NumberLimit; ++number) {
        DriveRegistry::Instance().Forget(number);
    }
}

void MadeUpSystem::Write(const fs::path& file, const std::string& text) const
{
    fs::create_directories((m_root / file).parent_path());
    std::ofstream(m_root / file) << text << '\n';
}

void MadeUpSystem::AddDisk(const std::string& name,
                           const std::string& deviceNumber,
                           std::uint64_t sizeBytes,
                           const Facts& facts)
{
    const fs::path folder = fs::path("sys/block") / name;
    Write(folder / "dev", deviceNumber);
    Write(folder / "size", std::to_string(sizeBytes / 512));
    for (const auto& [file, text] : facts) {
        Write(folder / file, text);
    }
    const ImageFile node(Node(name), sizeBytes);
}

void MadeUpSystem::AddPartition(const std::string& disk,
                                int number,
                                const std::string& deviceNumber,
                                std::uint64_t start,
                                std::uint64_t size)
{
    const fs::path folder = fs::path("sys/block") / disk / (disk + std::to_string(number));
    Write(folder / "partition", std::to_string(number));
    Write(folder / "dev", deviceNumber);
    Write(folder / "start", std::to_string(start));
    Write(folder / "size", std::to_string(size));
}

void MadeUpSystem::Remove(const std::string& disk)
{
    fs::remove_all(m_root / "sys/block" / disk);
    fs::remove(Node(disk));
}

void MadeUpSystem::Lock(const std::string& disk)
{
    fs::remove(Node(disk));
}

void MadeUpSystem::AddMount(const std::string& line)
{
    std::ofstream(m_root / "proc/self/mountinfo", std::ios::app) << line << '\n';
}

void MadeUpSystem::SetProperties(const std::string& deviceNumber, const std::string& lines)
{
    Write("run/udev/data/b" + deviceNumber, lines);
}
