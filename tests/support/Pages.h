// SPDX-License-Identifier: MIT
// Pages of memory that can be made to crash on access.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

/// Pages of zeros, readable and writable at first.
class Pages
{
public:
    static std::size_t pageSize()
    {
#if defined(_WIN32)
        SYSTEM_INFO information;
        GetSystemInfo(&information);
        return information.dwPageSize;
#else
        return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
#endif
    }

    explicit Pages(std::size_t bytes) : m_size((bytes + pageSize() - 1) / pageSize() * pageSize())
    {
#if defined(_WIN32)
        void* const memory = VirtualAlloc(nullptr, m_size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
#else
        void* memory = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            memory = nullptr;
#endif
        if (!memory)
            throw std::bad_alloc();
        m_data = static_cast<std::uint8_t*>(memory);
    }
    ~Pages()
    {
#if defined(_WIN32)
        VirtualFree(m_data, 0, MEM_RELEASE);
#else
        ::munmap(m_data, m_size);
#endif
    }
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;

    std::uint8_t* data() const
    {
        return m_data;
    }
    std::size_t size() const
    {
        return m_size;
    }

    /// `offset` and `bytes` must be multiples of the page size.
    void setAccessible(std::size_t offset, std::size_t bytes, bool accessible)
    {
#if defined(_WIN32)
        DWORD before;
        const bool success =
            VirtualProtect(m_data + offset, bytes, accessible ? PAGE_READWRITE : PAGE_NOACCESS, &before) != 0;
#else
        const bool success = ::mprotect(m_data + offset, bytes, accessible ? PROT_READ | PROT_WRITE : PROT_NONE) == 0;
#endif
        if (!success)
            throw std::bad_alloc();
    }

private:
    std::size_t m_size;
    std::uint8_t* m_data = nullptr;
};
