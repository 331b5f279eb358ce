// SPDX-License-Identifier: MIT
// Walk over the pixels of a row whose layout is not one array element a channel.
#pragma once

#include <Vistrel/Format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Vistrel {

/// The pixels of one row of packed 10-bit monochrome; `swap` is the format's packing field. Groups of four pixels lie
/// five bytes apart. With `Packedp` a group is read most significant bit first. With `PackedNoSwap` the little-endian
/// load is kept as it is although the first pixel's field then lies in bytes 6 and 7 of the load: what some hardware
/// delivers is exactly that.
template <std::uint32_t swap>
class Gray10PackedIterator
{
public:
    static_assert(swap == Packedp || swap == PackedNoSwap);

    /// Bytes from `end` on are never read and count as zero.
    Gray10PackedIterator(const std::uint8_t* row, const std::uint8_t* end) : m_pointer(row), m_end(end) {}

    /// The pixel's top eight bits.
    std::uint8_t operator*() { return static_cast<std::uint8_t>(fullDepth() >> 2); }

    /// All ten bits.
    std::uint16_t fullDepth()
    {
        if (m_reload) {
            m_word = load();
            m_reload = false;
        }
        return static_cast<std::uint16_t>((m_word >> (54 - 10 * (m_index % 4))) & 0x3FF);
    }

    Gray10PackedIterator& operator++()
    {
        if (++m_index % 4 == 0) {
            m_pointer += 5;
            m_reload = true;
        }
        return *this;
    }

private:
    std::uint64_t load() const
    {
        std::uint8_t bytes[8] = {};
        if (m_pointer < m_end)
            std::memcpy(bytes, m_pointer,
                        std::min<std::size_t>(sizeof bytes, static_cast<std::size_t>(m_end - m_pointer)));
        if constexpr (swap == Packedp)
            std::reverse(bytes, bytes + sizeof bytes);
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    }

    std::uint64_t m_index = 0; // pixel within the row
    const std::uint8_t* m_pointer;
    std::uint64_t m_word = 0;
    bool m_reload = true;
    const std::uint8_t* m_end;
};

/// One 32-bit word a pixel, with three fields of ten bits from bit 0 up.
class Color30Iterator
{
public:
    explicit Color30Iterator(const std::uint8_t* row) : m_pointer(row) {}

    std::uint32_t operator*() const
    {
        std::uint32_t word = 0;
        std::memcpy(&word, m_pointer, sizeof word);
        return word;
    }

    Color30Iterator& operator++()
    {
        m_pointer += 4;
        return *this;
    }

private:
    const std::uint8_t* m_pointer;
};

} // namespace Vistrel
