#include "platform/SourceOverlap.h"

#include "platform/Folders.h"

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <vector>

namespace {

std::string NumberText(dev_t device)
{
    return std::to_string(major(device)) + ":" + std::to_string(minor(device));
}

std::string FirstLine(const std::filesystem::path& path)
{
    std::ifstream stream(path);
    std::string line;
    std::getline(stream, line);
    return line;
}

std::filesystem::path NearestExisting(const std::filesystem::path& folder)
{
    std::error_code ignored;
    std::filesystem::path path = std::filesystem::absolute(folder, ignored).lexically_normal();
    while (!PathExists(path) && path.has_relative_path()) {
        path = path.parent_path();
    }
    return path;
}

// Some file systems show a number of their own instead of their device's: the mount table has the device.
std::string DeviceOfMount(const std::string& number)
{
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream words(line);
        std::string id;
        std::string parent;
        std::string device;
        words >> id >> parent >> device;
        const std::size_t rest = line.find(" - ");
        if (device != number || rest == std::string::npos) {
            continue;
        }
        std::istringstream tail(line.substr(rest + 3));
        std::string type;
        std::string source;
        tail >> type >> source;
        struct stat status = {};
        if (::stat(source.c_str(), &status) == 0 && S_ISBLK(status.st_mode)) {
            return NumberText(status.st_rdev);
        }
    }
    return number;
}

// What a device stands on: its whole disk, the devices below a mapped one, a loop device's file.
struct Below
{
    std::vector<std::string> devices;
    std::string backingFile;
};

Below WhatLiesBelow(const std::string& number)
{
    Below below;
    std::error_code error;
    const std::filesystem::path entry =
        std::filesystem::canonical("/sys/dev/block/" + number, error);
    if (error) {
        return below;
    }
    if (PathExists(entry / "partition")) {
        below.devices.push_back(FirstLine(entry.parent_path() / "dev"));
    }
    std::filesystem::directory_iterator slave(entry / "slaves", error);
    for (; !error && slave != std::filesystem::directory_iterator(); slave.increment(error)) {
        below.devices.push_back(FirstLine(slave->path() / "dev"));
    }
    below.backingFile = FirstLine(entry / "loop/backing_file");
    return below;
}

bool IsSameFile(const std::string& path, const struct stat& source)
{
    struct stat status = {};
    return !path.empty() && ::stat(path.c_str(), &status) == 0 && status.st_dev == source.st_dev &&
           status.st_ino == source.st_ino;
}

}  // namespace

bool FolderLiesOnSource(const std::filesystem::path& folder, const std::filesystem::path& source)
{
    struct stat folderStatus = {};
    struct stat sourceStatus = {};
    if (::stat(NearestExisting(folder).c_str(), &folderStatus) != 0 ||
        ::stat(source.c_str(), &sourceStatus) != 0) {
        return false;
    }
    const bool isDevice = S_ISBLK(sourceStatus.st_mode);
    const std::string wanted = NumberText(sourceStatus.st_rdev);
    std::vector<std::string> waiting = {DeviceOfMount(NumberText(folderStatus.st_dev))};
    std::set<std::string> seen;
    while (!waiting.empty()) {
        const std::string number = waiting.back();
        waiting.pop_back();
        if (number.empty() || !seen.insert(number).second) {
            continue;
        }
        if (isDevice && number == wanted) {
            return true;
        }
        const Below below = WhatLiesBelow(number);
        waiting.insert(waiting.end(), below.devices.begin(), below.devices.end());
        struct stat backing = {};
        if (!isDevice && IsSameFile(below.backingFile, sourceStatus)) {
            return true;
        }
        if (!below.backingFile.empty() && ::stat(below.backingFile.c_str(), &backing) == 0) {
            waiting.push_back(DeviceOfMount(NumberText(backing.st_dev)));
        }
    }
    return false;
}
