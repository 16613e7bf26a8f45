// Sources whose sectors are the fuzzer's bytes.
#pragma once

#include "platform/ByteView.h"
#include "storage/SectorSource.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

// While it lives, every source that is opened reads these bytes, whatever file it was opened on; the file gives the size
// alone. The bytes must outlive every source made of them.
class MemoryBytes
{
public:
    explicit MemoryBytes(ByteVector bytes) : m_bytes(std::move(bytes))
    {
        SetReaderDecorator([this](std::unique_ptr<IByteReader>) -> std::unique_ptr<IByteReader> {
            return std::make_unique<Reader>(m_bytes);
        });
    }
    MemoryBytes(const MemoryBytes&) = delete;
    MemoryBytes& operator=(const MemoryBytes&) = delete;
    ~MemoryBytes() { SetReaderDecorator({}); }

    const ByteVector& Bytes() const { return m_bytes; }

private:
    class Reader : public IByteReader
    {
    public:
        explicit Reader(const ByteVector& bytes) : m_bytes(bytes) {}
        ResultCode ReadAt(std::uint64_t position,
                          std::uint8_t* buffer,
                          std::size_t count,
                          std::size_t* outRead) override
        {
            *outRead = position < m_bytes.size() ? std::min(count, m_bytes.size() - position) : 0;
            if (*outRead > 0) {
                std::memcpy(buffer, m_bytes.data() + position, *outRead);
            }
            return ResultSuccess;
        }

    private:
        const ByteVector& m_bytes;
    };

    ByteVector m_bytes;
};

// Whole sectors, for what reads through a SectorSource alone.
class MemorySource
{
public:
    // Zeros fill the last sector.
    explicit MemorySource(ByteVector image) : m_memory(WholeSectors(std::move(image))) {}

    void Open(SectorSource& source) const
    {
        (void)source.OpenImage("/dev/null");
        source.totalSectors = Sectors();
    }
    std::uint64_t Sectors() const { return m_memory.Bytes().size() / 512; }
    ByteView Sector(std::uint64_t lba) const { return {m_memory.Bytes().data() + lba * 512, 512}; }

private:
    static ByteVector WholeSectors(ByteVector image)
    {
        image.resize((image.size() + 511) / 512 * 512);
        return image;
    }

    MemoryBytes m_memory;
};
