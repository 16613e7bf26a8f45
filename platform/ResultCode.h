// Failures travel as numbers. This is the one place where errno becomes such a number, and where a
// number gets the English text that a restore report shows.
#pragma once

#include <cstdint>
#include <string>

// 0 is success, a positive value one of the numbers below, a negative one a private code of an engine.
using ResultCode = std::int32_t;

inline constexpr ResultCode ResultSuccess = 0;
inline constexpr ResultCode ResultFileNotFound = 2;
inline constexpr ResultCode ResultPathNotFound = 3;
inline constexpr ResultCode ResultTooManyOpenFiles = 4;
inline constexpr ResultCode ResultAccessDenied = 5;
inline constexpr ResultCode ResultInvalidHandle = 6;
inline constexpr ResultCode ResultOutOfMemory = 8;
inline constexpr ResultCode ResultNoMedium = 21;
inline constexpr ResultCode ResultWriteFault = 29;
inline constexpr ResultCode ResultReadFault = 30;
inline constexpr ResultCode ResultGeneralFailure = 31;
inline constexpr ResultCode ResultBusy = 32;
inline constexpr ResultCode ResultLocked = 33;
inline constexpr ResultCode ResultShortRead =
    38;  // a boot-sector read that ended at the source's end
inline constexpr ResultCode ResultNotSupported = 50;
inline constexpr ResultCode ResultFileExists = 80;
inline constexpr ResultCode ResultInvalidParameter = 87;
inline constexpr ResultCode ResultDiskFull = 112;
inline constexpr ResultCode ResultNegativeSeek = 131;
inline constexpr ResultCode ResultAlreadyExists = 183;
inline constexpr ResultCode ResultDeviceFault = 1117;
inline constexpr ResultCode ResultNotConnected = 1167;
// Only callbacks make these two; engines pass them on. A cancelled scan still gives what it found its place; one that is
// stopped at once leaves everything as it is, like a process that was killed.
inline constexpr ResultCode ResultCancelled = -9527;
inline constexpr ResultCode ResultStoppedAtOnce = -9528;

constexpr bool IsStop(ResultCode code)
{
    return code == ResultCancelled || code == ResultStoppedAtOnce;
}

// What was being done when errno was set: the same errno means different things to the user.
enum class FileOperation
{
    Open,
    Read,
    Write,
    Seek,
    MakeFolder,
    Rename,
    Remove,
    Query
};

// The result code of an errno value. EINTR is retried by the callers and is not expected here.
ResultCode ErrorFromErrno(int errorNumber, FileOperation operation);

// The sentence for a result code, in English; "Error 1234." for one without a text of its own.
std::string ErrorText(ResultCode code);
