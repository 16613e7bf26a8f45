#include "tests/support/Pictures.h"

#include "tests/support/Bytes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

namespace {

void Append(ByteVector& out, const ByteVector& bytes)
{
    out.insert(out.end(), bytes.begin(), bytes.end());
}

void AppendBig(ByteVector& out, std::uint32_t value, int bytes)
{
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void AppendLittle(ByteVector& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<std::uint8_t>(value >> (i * 8)));
    }
}

// The entropy-coded part of a JPEG: bits from the top, a zero after each FF.
class BitWriter
{
public:
    explicit BitWriter(ByteVector& out) : m_out(out) {}
    void Put(std::uint32_t bits, int count)
    {
        for (int i = count - 1; i >= 0; --i) {
            m_byte = m_byte << 1 | (bits >> i & 1u);
            if (++m_filled == 8) {
                m_out.push_back(static_cast<std::uint8_t>(m_byte));
                if (m_byte == 0xFF) {
                    m_out.push_back(0);
                }
                m_byte = 0;
                m_filled = 0;
            }
        }
    }
    void Finish()
    {
        while (m_filled != 0) {
            Put(1, 1);
        }
    }

private:
    ByteVector& m_out;
    std::uint32_t m_byte = 0;
    int m_filled = 0;
};

int BitLength(int value)
{
    int bits = 0;
    for (int rest = std::abs(value); rest != 0; rest >>= 1) {
        ++bits;
    }
    return bits;
}

std::uint32_t Crc32(const ByteVector& bytes, std::size_t from)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::size_t i = from; i < bytes.size(); ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ ((crc & 1u) != 0 ? 0xEDB88320u : 0u);
        }
    }
    return ~crc;
}

void AppendChunk(ByteVector& out, std::string_view type, const ByteVector& content)
{
    AppendBig(out, static_cast<std::uint32_t>(content.size()), 4);
    const std::size_t from = out.size();
    out.insert(out.end(), type.begin(), type.end());
    Append(out, content);
    AppendBig(out, Crc32(out, from), 4);
}

// A zlib stream of stored blocks.
ByteVector StoredZlib(const ByteVector& raw)
{
    constexpr std::size_t LargestBlock = 65535;
    ByteVector out = Bytes("78 01");
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (std::size_t at = 0; at < raw.size(); at += LargestBlock) {
        const std::size_t count = std::min(LargestBlock, raw.size() - at);
        out.push_back(at + count == raw.size() ? 1 : 0);
        AppendLittle(out, static_cast<std::uint32_t>(count), 2);
        AppendLittle(out, static_cast<std::uint32_t>(count) ^ 0xFFFF, 2);
        for (std::size_t i = at; i < at + count; ++i) {
            out.push_back(raw[i]);
            low = (low + raw[i]) % 65521;
            high = (high + low) % 65521;
        }
    }
    AppendBig(out, high << 16 | low, 4);
    return out;
}

}  // namespace

ByteVector MakeJpeg(std::uint32_t width, std::uint32_t height, std::uint64_t seed)
{
    ByteVector out = Bytes("FF D8 FF E0 00 10 'JFIF' 00 01 01 00 00 01 00 01 00 00 "
                           "FF DB 00 43 00 08*64 FF C0 00 0B 08");
    AppendBig(out, height, 2);
    AppendBig(out, width, 2);
    // One component. DC: twelve categories, four bits each. AC: the end-of-block symbol alone, one bit.
    Append(out, Bytes("01 01 11 00 "
                      "FF C4 00 1F 00 00 00 00 0C 00*12 00 01 02 03 04 05 06 07 08 09 0A 0B "
                      "FF C4 00 14 10 01 00*15 00 "
                      "FF DA 00 08 01 01 00 00 3F 00"));
    BitWriter bits(out);
    int previous = 0;
    for (const std::uint8_t grey : RandomBytes(std::size_t{width / 8} * (height / 8), seed)) {
        const int difference = grey - 128 - previous;
        previous += difference;
        const int category = BitLength(difference);
        bits.Put(static_cast<std::uint32_t>(category), 4);
        const int value = difference < 0 ? difference + (1 << category) - 1 : difference;
        bits.Put(static_cast<std::uint32_t>(value), category);
        bits.Put(0, 1);
    }
    bits.Finish();
    Append(out, Bytes("FF D9"));
    return out;
}

ByteVector MakePng(std::uint32_t width, std::uint32_t height, std::uint64_t seed)
{
    ByteVector header;
    AppendBig(header, width, 4);
    AppendBig(header, height, 4);
    Append(header, Bytes("08 00 00 00 00"));
    const ByteVector pixels = RandomBytes(std::size_t{width} * height, seed);
    ByteVector rows;
    for (std::uint32_t row = 0; row < height; ++row) {
        rows.push_back(0);  // no filter
        const auto first = pixels.begin() + std::ptrdiff_t{row} * width;
        rows.insert(rows.end(), first, first + width);
    }
    ByteVector out = Bytes("89 'PNG' 0D 0A 1A 0A");
    AppendChunk(out, "IHDR", header);
    AppendChunk(out, "IDAT", StoredZlib(rows));
    AppendChunk(out, "IEND", {});
    return out;
}

ByteVector MakeBmp(std::uint32_t width, std::uint32_t height, std::uint64_t seed)
{
    constexpr std::uint32_t HeaderBytes = 54;
    const std::uint32_t pixelBytes = width * height * 3;
    ByteVector out = Bytes("'BM'");
    AppendLittle(out, HeaderBytes + pixelBytes, 4);
    AppendLittle(out, 0, 4);
    AppendLittle(out, HeaderBytes, 4);
    AppendLittle(out, 40, 4);
    AppendLittle(out, width, 4);
    AppendLittle(out, height, 4);
    AppendLittle(out, 1, 2);
    AppendLittle(out, 24, 2);
    AppendLittle(out, 0, 4);
    AppendLittle(out, pixelBytes, 4);
    Append(out, Bytes("00*16"));
    Append(out, RandomBytes(pixelBytes, seed));
    return out;
}
