#include "platform/ResultCode.h"

#include <cerrno>

namespace {

using Operation = FileOperation;

struct ErrnoRow
{
    int errorNumber;
    ResultCode code;
};

struct OperationRow
{
    int errorNumber;
    Operation operation;
    ResultCode code;
};

struct TextRow
{
    ResultCode code;
    const char* text;
};

// Asked first: these mean something else for one operation than for the others.
constexpr OperationRow ByOperation[] = {
    {ENODEV, Operation::Open, 2},     {ENXIO, Operation::Open, 2},
    {ENODEV, Operation::Query, 2},    {ENXIO, Operation::Query, 2},
    {ENODEV, Operation::Read, 1167},  {ENXIO, Operation::Read, 1167},
    {ENODEV, Operation::Write, 1167}, {ENXIO, Operation::Write, 1167},
    {EBADMSG, Operation::Read, 23},   {EUCLEAN, Operation::Read, 23},
    {EILSEQ, Operation::Read, 23},    {EIO, Operation::Seek, 25},
    {EIO, Operation::Write, 29},      {EIO, Operation::Read, 30},
    {EEXIST, Operation::Open, 80},    {EEXIST, Operation::MakeFolder, 183},
    {EEXIST, Operation::Rename, 183}, {EINVAL, Operation::Read, 87},
    {EINVAL, Operation::Write, 87},   {EINVAL, Operation::Seek, 87},
    {EINVAL, Operation::Query, 87},   {EINVAL, Operation::Open, 123},
    {EILSEQ, Operation::Open, 123},   {EINVAL, Operation::MakeFolder, 123},
    {EINVAL, Operation::Rename, 123}, {EILSEQ, Operation::MakeFolder, 123},
    {EILSEQ, Operation::Rename, 123},
};

constexpr ErrnoRow ByErrno[] = {
    {ENOENT, 2},       {ENOTDIR, 3},  {ELOOP, 3},          {EMFILE, 4},      {ENFILE, 4},
    {EACCES, 5},       {EPERM, 5},    {EISDIR, 5},         {EBADF, 6},       {ENOMEM, 8},
    {ENOBUFS, 8},      {EXDEV, 17},   {EROFS, 19},         {ENOMEDIUM, 21},  {EMEDIUMTYPE, 21},
    {EBUSY, 32},       {ETXTBSY, 32}, {EAGAIN, 33},        {ENOLCK, 33},     {EDEADLK, 33},
    {ENOTSUP, 50},     {ENOSYS, 50},  {ENOTTY, 50},        {EFAULT, 87},     {EOVERFLOW, 87},
    {EPIPE, 109},      {ENOSPC, 112}, {EDQUOT, 112},       {ETIMEDOUT, 121}, {ERANGE, 122},
    {ENOTEMPTY, 145},  {EEXIST, 183}, {ENAMETOOLONG, 206}, {EFBIG, 223},     {EINTR, 995},
    {ECANCELED, 995},  {EIO, 1117},   {ESTALE, 1167},      {ENOLINK, 1167},  {ESHUTDOWN, 1167},
    {EREMOTEIO, 1167},
};

constexpr TextRow Texts[] = {
    {2, "The file was not found."},
    {3, "The folder was not found."},
    {4, "Too many files are open."},
    {5, "Access is denied."},
    {6, "The file is not open."},
    {8, "There is not enough memory."},
    {17, "The file cannot be moved to another disk."},
    {19, "The destination is write-protected."},
    {21, "The drive is not ready or holds no medium."},
    {23, "The data failed its checksum."},
    {25, "The position on the disk could not be reached."},
    {29, "The disk could not be written."},
    {30, "The disk could not be read."},
    {31, "The device does not work properly."},
    {32, "The file is in use by another program."},
    {33, "The file is locked by another program."},
    {38, "The source ended too early."},
    {39, "The disk is full."},
    {50, "The operation is not supported here."},
    {80, "The file already exists."},
    {87, "A value given was not valid."},
    {109, "The other end was closed."},
    {112, "The disk is full."},
    {121, "The device did not answer in time."},
    {122, "The buffer is too small."},
    {123, "The file name is not allowed on the destination."},
    {131, "The position asked for lies before the beginning."},
    {145, "The folder is not empty."},
    {183, "A file or folder of that name already exists."},
    {206, "The name or path is too long."},
    {223, "The file is too large for the destination's file system."},
    {995, "The operation was stopped."},
    {1117, "The device reported an error."},
    {1167, "The device is no longer connected."},
    // The engines' own.
    {-1, "What the file system knew of the file has been overwritten."},
    {-100, "The file's entry no longer tells where its data lie."},
    {-101, "The file's entry no longer tells where its data lie."},
    {ResultCancelled, "The operation was stopped."},
    {ResultStoppedAtOnce, "The operation was stopped."},
};

}  // namespace

ResultCode ErrorFromErrno(int errorNumber, FileOperation operation)
{
    for (const OperationRow& row : ByOperation) {
        if (row.errorNumber == errorNumber && row.operation == operation) {
            return row.code;
        }
    }
    for (const ErrnoRow& row : ByErrno) {
        if (row.errorNumber == errorNumber) {
            return row.code;
        }
    }
    return ResultGeneralFailure;
}

std::string ErrorText(ResultCode code)
{
    for (const TextRow& row : Texts) {
        if (row.code == code) {
            return row.text;
        }
    }
    return "Error " + std::to_string(code) + ".";
}
