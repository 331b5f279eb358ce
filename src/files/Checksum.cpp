// SPDX-License-Identifier: MIT
// The checksum of PNG files.
#include "files/Checksum.h"

#include <array>

namespace Vistrel {

namespace {

constexpr std::array<quint32, 256> makeTable()
{
    std::array<quint32, 256> table{};
    for (quint32 byte = 0; byte < 256; ++byte) {
        quint32 sum = byte;
        for (int bit = 0; bit < 8; ++bit)
            sum = sum >> 1 ^ ((sum & 1) != 0 ? 0xEDB88320u : 0u);
        table[byte] = sum;
    }
    return table;
}

constexpr std::array<quint32, 256> table = makeTable();

} // namespace

void Checksum::add(const char* bytes, std::size_t count)
{
    quint32 sum = m_sum;
    for (std::size_t i = 0; i < count; ++i)
        sum = sum >> 8 ^ table[(sum ^ static_cast<uchar>(bytes[i])) & 0xFF];
    m_sum = sum;
}

} // namespace Vistrel
