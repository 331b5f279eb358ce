// SPDX-License-Identifier: MIT
// The checksum of PNG files.
#pragma once

#include <QtCore/QtGlobal>

#include <cstddef>

namespace Vistrel {

/// The cyclic redundancy check of the PNG standard, annex D, over bytes that come in pieces.
class Checksum
{
public:
    void add(const char* bytes, std::size_t count);
    quint32 value() const { return ~m_sum; }

private:
    quint32 m_sum = ~quint32{0};
};

} // namespace Vistrel
