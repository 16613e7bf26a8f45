// A disk that fails, for pictures of a rescue: preloaded into the program, reads of FAILING_PATH from byte FAILING_FROM to FAILING_TO end
// with an error, and all reads of it come at FAILING_SPEED bytes a second. Nothing else is touched.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

enum
{
    ErrorMicroseconds = 3000,
    SmallestSlowedBytes = 4096
};

// What the program starts reads no failing disk.
__attribute__((constructor)) static void LeaveChildrenAlone(void)
{
    unsetenv("LD_PRELOAD");
}

static long long Setting(const char* name)
{
    const char* text = getenv(name);
    return text != NULL ? atoll(text) : 0;
}

static int IsFailingPath(int descriptor)
{
    const char* wanted = getenv("FAILING_PATH");
    char link[64];
    char path[4096];
    if (wanted == NULL) {
        return 0;
    }
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(link, path, sizeof path - 1);
    if (length <= 0) {
        return 0;
    }
    path[length] = 0;
    return strcmp(path, wanted) == 0;
}

ssize_t pread64(int descriptor, void* bytes, size_t count, off64_t offset)
{
    ssize_t (*next)(int, void*, size_t, off64_t) =
        (ssize_t(*)(int, void*, size_t, off64_t))dlsym(RTLD_NEXT, "pread64");
    if (IsFailingPath(descriptor)) {
        const off64_t from = Setting("FAILING_FROM");
        if (offset < Setting("FAILING_TO") && offset + (off64_t)count > from) {
            if (offset >= from) {
                usleep(ErrorMicroseconds);
                errno = EIO;
                return -1;
            }
            count = (size_t)(from - offset);
        }
        const long long speed = Setting("FAILING_SPEED");
        if (speed > 0 && count >= SmallestSlowedBytes) {
            usleep((useconds_t)(count * 1000000 / (size_t)speed));
        }
    }
    return next(descriptor, bytes, count, offset);
}

ssize_t pread(int descriptor, void* bytes, size_t count, off_t offset)
{
    return pread64(descriptor, bytes, count, offset);
}
