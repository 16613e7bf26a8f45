// Bounds-checked reading of bytes that came from outside. The only place where bytes become numbers:
// a read outside the view gives 0 and touches nothing.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

// A window over bytes that somebody else owns; valid as long as they are.
class ByteView
{
public:
    constexpr ByteView() = default;
    // A null pointer or a negative size makes an empty view.
    template <std::integral SizeType>
    constexpr ByteView(const std::uint8_t* bytes, SizeType size)
        : m_bytes(bytes), m_size(bytes != nullptr && size > 0 ? static_cast<std::size_t>(size) : 0)
    {
    }
    constexpr explicit ByteView(std::span<const std::uint8_t> bytes)
        : m_bytes(bytes.data()), m_size(bytes.size())
    {
    }

    constexpr std::size_t Size() const { return m_size; }
    constexpr bool Empty() const { return m_size == 0; }
    constexpr const std::uint8_t* Data() const { return m_bytes; }
    constexpr std::span<const std::uint8_t> Span() const { return {m_bytes, m_size}; }

    // Whether count bytes from offset lie inside. Written with a subtraction: offset + count could wrap.
    constexpr bool Covers(std::size_t offset, std::size_t count) const
    {
        return offset <= m_size && count <= m_size - offset;
    }

    // Little-endian numbers at a byte offset; 0 when they do not lie wholly inside.
    std::uint8_t U8(std::size_t offset) const { return Load<std::uint8_t>(offset); }
    std::uint16_t U16(std::size_t offset) const { return Load<std::uint16_t>(offset); }
    std::uint32_t U32(std::size_t offset) const { return Load<std::uint32_t>(offset); }
    std::uint64_t U64(std::size_t offset) const { return Load<std::uint64_t>(offset); }
    // Big-endian ones.
    std::uint16_t U16Be(std::size_t offset) const { return __builtin_bswap16(U16(offset)); }
    std::uint32_t U32Be(std::size_t offset) const { return __builtin_bswap32(U32(offset)); }

    // The bytes at offset are exactly text.
    bool Matches(std::size_t offset, std::string_view text) const
    {
        return Covers(offset, text.size()) &&
               std::memcmp(m_bytes + offset, text.data(), text.size()) == 0;
    }

    // The part from offset, at most count bytes; empty past the end.
    constexpr ByteView Sub(std::size_t offset, std::size_t count = SIZE_MAX) const
    {
        if (offset > m_size) {
            return {};
        }
        const std::size_t rest = m_size - offset;
        return {m_bytes + offset, count < rest ? count : rest};
    }

    // Every byte is zero; also true of an empty view.
    bool AllZero() const;

private:
    template <std::unsigned_integral T>
    T Load(std::size_t offset) const
    {
        static_assert(std::endian::native == std::endian::little);
        T value = 0;
        if (Covers(offset, sizeof value)) {
            std::memcpy(&value, m_bytes + offset, sizeof value);
        }
        return value;
    }

    const std::uint8_t* m_bytes = nullptr;
    std::size_t m_size = 0;
};

inline bool ByteView::AllZero() const
{
    const std::uint8_t* at = m_bytes;
    std::size_t left = m_size;
    for (; left >= sizeof(std::uint64_t);
         at += sizeof(std::uint64_t), left -= sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, at, sizeof word);
        if (word != 0) {
            return false;
        }
    }
    for (; left > 0; ++at, --left) {
        if (*at != 0) {
            return false;
        }
    }
    return true;
}
