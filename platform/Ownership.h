// To whom belongs what this program makes for a user.
#pragma once

#include <filesystem>

// Gives a plain file or a folder that this process has made the mode that the umask leaves of 0666 or 0777, and, where it
// runs as root under sudo, hands it to the user who called sudo. Without the right to it, it stays as it is: it is
// there all the same. Links and files with a second name are left alone, as another user could have put them there.
void HandToUser(const std::filesystem::path& path);
