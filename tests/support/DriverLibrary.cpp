// SPDX-License-Identifier: MIT
// A driver library whose version the environment gives.
#include <cstdint>
#include <cstdlib>

#if defined(_WIN32)
#define DRIVER_EXPORT extern "C" __declspec(dllexport)
#else
#define DRIVER_EXPORT extern "C" __attribute__((visibility("default")))
#endif

#if defined(DRIVER_HAS_VERSION)
DRIVER_EXPORT void KVDriverVersion(std::uint32_t* majorWord, std::uint32_t* minorWord)
{
    char* rest = nullptr; // "80000006 1f"
    *majorWord = static_cast<std::uint32_t>(std::strtoul(std::getenv("DRIVER_VERSION"), &rest, 16));
    *minorWord = static_cast<std::uint32_t>(std::strtoul(rest, nullptr, 16));
}
#else
DRIVER_EXPORT void somethingElse() {}
#endif
