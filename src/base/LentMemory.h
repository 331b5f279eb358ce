// SPDX-License-Identifier: MIT
// Finds the owner of memory by an address in it.
#pragma once

#include <cstddef>
#include <memory>

namespace Vistrel {

/// Registers memory of the library whose address a host gets: `size` bytes from `begin`, which live as long as `owner`.
/// Thread-safe, as is the function below; neither blocks for longer than a look-up. Throws `std::bad_alloc`.
void registerLentMemory(const std::shared_ptr<const void>& owner, const void* begin, std::size_t size);

/// Returns the owner of the registered memory that contains `address`; null when it is not registered or freed.
std::shared_ptr<const void> lentMemoryAt(const void* address);

} // namespace Vistrel
