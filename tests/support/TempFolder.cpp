#include "tests/support/TempFolder.h"

#include "platform/Folders.h"
#include "recovery/ScanLogDirectory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

TempFolder::TempFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "lumivault-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + name);
    }
    m_path = name;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

DataFolder::DataFolder()
{
    SetApplicationDataFolder(m_folder.Path());
}

DataFolder::~DataFolder()
{
    SetApplicationDataFolder({});
}

std::shared_ptr<ScanLogDirectory> OpenLog()
{
    return std::make_shared<ScanLogDirectory>();
}

ByteVector ReadFileBytes(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path.string());
    }
    const std::vector<char> text{std::istreambuf_iterator<char>(stream),
                                 std::istreambuf_iterator<char>()};
    return {text.begin(), text.end()};
}

void WriteFileBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes)
{
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    for (const std::uint8_t byte : bytes) {
        stream.put(static_cast<char>(byte));
    }
    stream.close();
    if (!stream) {
        throw std::runtime_error("cannot write " + path.string());
    }
}
