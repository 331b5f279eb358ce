// SPDX-License-Identifier: MIT
// Finds the owner of memory by an address in it.
#pragma once

#include <cstddef>
#include <memory>

namespace Vistrel {

/// Registers memory of the library that a host is given the address of: `size` bytes from `begin`, which live as long
/// as `owner`. Thread-safe, as is the function below; neither blocks for longer than a look-up. Throws
/// `std::bad_alloc`.
void registerLentMemory(const std::shared_ptr<const void>& owner, const void* begin, std::size_t size);

/// The owner of the registered memory that holds the byte at `address`; null when there is none any more.
std::shared_ptr<const void> lentMemoryAt(const void* address);

} // namespace Vistrel
