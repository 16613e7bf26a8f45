// A source whose sectors are the fuzzer's bytes.
#pragma once

#include "platform/ByteView.h"
#include "storage/SectorSource.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

// The bytes must outlive every source made of them.
class MemorySource
{
public:
    // Zeros fill the last sector.
    explicit MemorySource(ByteVector image) : m_image(std::move(image))
    {
        m_image.resize((m_image.size() + 511) / 512 * 512);
        SetReaderDecorator([this](std::unique_ptr<IByteReader>) -> std::unique_ptr<IByteReader> {
            return std::make_unique<Reader>(m_image);
        });
    }
    MemorySource(const MemorySource&) = delete;
    MemorySource& operator=(const MemorySource&) = delete;
    ~MemorySource() { SetReaderDecorator({}); }

    void Open(SectorSource& source) const
    {
        (void)source.OpenImage("/dev/null");
        source.totalSectors = m_image.size() / 512;
    }
    std::uint64_t Sectors() const { return m_image.size() / 512; }
    ByteView Sector(std::uint64_t lba) const { return {m_image.data() + lba * 512, 512}; }

private:
    class Reader : public IByteReader
    {
    public:
        explicit Reader(const ByteVector& image) : m_bytes(image) {}
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

    ByteVector m_image;
};
