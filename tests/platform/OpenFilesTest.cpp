// Descriptors that nobody is left to close.
#include "platform/OpenFiles.h"

#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

TEST(OpenFilesTest, AllOfAPathAreClosedAndNoOthers)
{
    const TempFolder folder;
    const int first = open((folder / "a").c_str(), O_CREAT | O_WRONLY, 0600);
    const int second = open((folder / "a").c_str(), O_RDONLY);
    const int other = open((folder / "ab").c_str(), O_CREAT | O_WRONLY, 0600);
    ASSERT_GE(std::min({first, second, other}), 0);
    CloseFilesOf(folder / "a");
    EXPECT_EQ(fcntl(first, F_GETFD), -1);
    EXPECT_EQ(fcntl(second, F_GETFD), -1);
    EXPECT_NE(fcntl(other, F_GETFD), -1);
    close(other);
    CloseFilesOf(folder / "ab");
    CloseFilesOf(folder / "none");
}

}  // namespace
