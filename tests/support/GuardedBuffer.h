// SPDX-License-Identifier: MIT
// Memory that ends, to the byte, at a page which cannot be touched.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>

#include <sys/mman.h>
#include <unistd.h>

/// `bytes` bytes between two pages that crash on any access. What alignment leaves between the bytes and the pages
/// holds `guardByte`, so a write into it is seen, and a value read from it is a wrong one.
class GuardedBuffer
{
public:
    enum Placement {
        AtFront,   ///< directly after the first page
        AtBack,    ///< directly before the last page
        Unaligned, ///< at an odd address
    };
    static constexpr std::uint8_t guardByte = 0xA5;

    GuardedBuffer(std::size_t bytes, Placement placement) : m_size(bytes)
    {
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        m_inner = (bytes + 1 + page - 1) / page * page;
        m_mapped = m_inner + 2 * page;
        void* const memory = ::mmap(nullptr, m_mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            throw std::bad_alloc();
        m_first = static_cast<std::uint8_t*>(memory) + page;
        if (::mprotect(m_first, m_inner, PROT_READ | PROT_WRITE) != 0) {
            ::munmap(memory, m_mapped);
            throw std::bad_alloc();
        }
        std::fill_n(m_first, m_inner, guardByte);
        m_data = placement == AtBack ? m_first + m_inner - bytes : placement == AtFront ? m_first : m_first + 1;
    }
    ~GuardedBuffer() { ::munmap(m_first - (m_mapped - m_inner) / 2, m_mapped); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    std::uint8_t* data() const { return m_data; }
    std::size_t size() const { return m_size; }

    /// Whether nothing was written beside the bytes.
    bool isIntact() const
    {
        const auto isGuard = [](std::uint8_t byte) { return byte == guardByte; };
        return std::all_of(m_first, m_data, isGuard) && std::all_of(m_data + m_size, m_first + m_inner, isGuard);
    }

private:
    std::size_t m_size;
    std::size_t m_inner = 0;  // accessible bytes, whole pages
    std::size_t m_mapped = 0; // with the pages at both ends
    std::uint8_t* m_first = nullptr;
    std::uint8_t* m_data = nullptr;
};
