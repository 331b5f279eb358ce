// SPDX-License-Identifier: MIT
// Memory that ends exactly at a page that cannot be accessed.
#pragma once

#include "support/Pages.h"

#include <algorithm>

/// `bytes` bytes between two pages that crash on any access. The gap that alignment leaves is filled with `guardByte`,
/// so that a write into it is detected, and a read from it gives a wrong value.
class GuardedBuffer
{
public:
    enum Placement {
        AtFront,   ///< directly after the first page
        AtBack,    ///< directly before the last page
        Unaligned, ///< at an odd address
    };
    static constexpr std::uint8_t guardByte = 0xA5;

    GuardedBuffer(std::size_t bytes, Placement placement) : m_size(bytes), m_pages(bytes + 1 + 2 * Pages::pageSize())
    {
        const std::size_t page = Pages::pageSize();
        m_first = m_pages.data() + page;
        m_last = m_pages.data() + m_pages.size() - page;
        m_pages.setAccessible(0, page, false);
        m_pages.setAccessible(m_pages.size() - page, page, false);
        std::fill(m_first, m_last, guardByte);
        m_data = placement == AtBack ? m_last - bytes : placement == AtFront ? m_first : m_first + 1;
    }

    std::uint8_t* data() const { return m_data; }
    std::size_t size() const { return m_size; }

    /// Whether nothing was written outside the bytes.
    bool isIntact() const
    {
        const auto isGuard = [](std::uint8_t byte) { return byte == guardByte; };
        return std::all_of(m_first, m_data, isGuard) && std::all_of(m_data + m_size, m_last, isGuard);
    }

private:
    std::size_t m_size;
    Pages m_pages;
    std::uint8_t* m_first = nullptr; // of the accessible pages
    std::uint8_t* m_last = nullptr;  // their end
    std::uint8_t* m_data = nullptr;
};
