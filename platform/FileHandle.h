// Files and devices by descriptor. Sources are opened for reading only, always; whatever writes goes
// through one of the two opening functions that say so.
#pragma once

#include "platform/ResultCode.h"

#include <cstdint>
#include <filesystem>

// Owns one descriptor and closes it. Move only.
class FileHandle
{
public:
    FileHandle() = default;
    explicit FileHandle(int descriptor) : m_descriptor(descriptor) {}
    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle();

    bool IsOpen() const { return m_descriptor >= 0; }
    int Descriptor() const { return m_descriptor; }
    void Close();

    // Opens an existing file or device, O_RDONLY. The handle is replaced only on success.
    [[nodiscard]] ResultCode OpenForReading(const std::filesystem::path& path);
    // Opens for reading and writing, creating when missing (mode 0600); an existing file keeps its
    // contents. What is no plain file is refused, a symbolic link too: nothing is ever written to a device or through a
    // link.
    [[nodiscard]] ResultCode OpenOrCreate(const std::filesystem::path& path);

    // Another opening of the same device that goes past the system's cache: a sector that cannot be read does not take those
    // around it with it. ResultNotSupported for what is no device; a user without rights to it may be refused.
    [[nodiscard]] ResultCode OpenDirect(FileHandle& outHandle) const;
    // The same for this opening, which duplicates of it share: for one that somebody else has made, with rights that this
    // user does not have. False for what is no device, or when the system does not do it.
    bool SetDirect(bool direct) const;
    // A second handle of the same opening. The other one is replaced only on success.
    [[nodiscard]] ResultCode Duplicate(FileHandle& outHandle) const;

    // Reads up to count bytes at a byte position, retried after signals. *outRead is always set; fewer
    // bytes than asked with result 0 means the end was reached.
    [[nodiscard]] ResultCode
    ReadAt(std::uint64_t position, void* buffer, std::size_t count, std::size_t* outRead) const;
    // Writes all of it at a byte position, or fails; *outWritten, when given, tells how far it came.
    [[nodiscard]] ResultCode WriteAt(std::uint64_t position,
                                     const void* bytes,
                                     std::size_t count,
                                     std::size_t* outWritten = nullptr) const;
    [[nodiscard]] ResultCode Truncate(std::uint64_t sizeBytes) const;
    // Waits until what was written is on the disk: it outlives a power cut then.
    [[nodiscard]] ResultCode SyncData() const;
    // Size in bytes of a regular file or block device.
    [[nodiscard]] ResultCode Size(std::uint64_t* outBytes) const;
    // Last write time as a FILETIME.
    [[nodiscard]] ResultCode WriteTime(std::uint64_t* outFileTime) const;
    // Logical sector size of a block device in bytes; 0 when it is none or does not tell.
    std::uint32_t DeviceSectorSize() const;
    bool IsBlockDevice() const;
    bool IsRegularFile() const;
    // Takes the lock that other processes see on this file; it is given back at closing. False when one has it.
    bool TryLock() const;
    // Reads only what is asked for from now on: on a failing disk, reading ahead costs minutes and may cost the disk.
    void StopReadingAhead() const;
    // Drops what the system caches of a device or file, so that the next read comes from the medium.
    void DropCache() const;
    // Has a device's own cache written out and dropped. On a busy disk this waits.
    void FlushDevice() const;

private:
    int m_descriptor = -1;
};

// A plain file that holds these bytes and nothing else afterwards, made when missing (mode 0600). After a failure it can
// hold a part of them.
[[nodiscard]] ResultCode
WriteWholeFile(const std::filesystem::path& path, const void* bytes, std::size_t count);
