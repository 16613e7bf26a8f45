// Tells the maker's site once for each user that the program is used.
#pragma once

#include <filesystem>
#include <string>
#include <thread>

// "Used" below the application-data folder.
std::filesystem::path FirstUseMarker();

// Nothing when the marker is there. Else it asks the site, if there is one, on a thread of its own, and then makes the marker,
// whatever came of it. The thread is empty when there is nothing to wait for.
std::thread PingOnFirstUse(const std::string& site, const std::filesystem::path& marker);
