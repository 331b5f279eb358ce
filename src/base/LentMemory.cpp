// SPDX-License-Identifier: MIT
// Finds the owner of memory by an address in it.
#include "base/LentMemory.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <vector>

namespace Vistrel {

namespace {

struct Registration
{
    std::uintptr_t begin;
    std::uintptr_t end;
    std::weak_ptr<const void> owner;
};

// Never deleted: a detached thread may look up an address while the process ends.
struct Registry
{
    std::mutex mutex; // not held while a frame's memory is freed
    std::vector<Registration> registrations;
};

Registry& registry()
{
    static Registry* const instance = new Registry;
    return *instance;
}

} // namespace

void registerLentMemory(const std::shared_ptr<const void>& owner, const void* begin, std::size_t size)
{
    const auto address = reinterpret_cast<std::uintptr_t>(begin);
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    auto& entries = all.registrations;
    entries.erase(
        std::remove_if(entries.begin(), entries.end(), [](const Registration& entry) { return entry.owner.expired(); }),
        entries.end());
    entries.push_back({address, address + size, owner});
}

std::shared_ptr<const void> lentMemoryAt(const void* address)
{
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    for (const Registration& entry : all.registrations) {
        if (wanted < entry.begin || wanted >= entry.end)
            continue;
        if (auto owner = entry.owner.lock()) // an expired entry may have the same address
            return owner;
    }
    return nullptr;
}

} // namespace Vistrel
