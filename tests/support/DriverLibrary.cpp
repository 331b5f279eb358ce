// SPDX-License-Identifier: MIT
// A driver library whose version the environment gives. It is read when the library is loaded.
#include <cstdint>
#include <cstdlib>

namespace {

struct Version
{
    std::uint32_t majorWord = 0;
    std::uint32_t minorWord = 0;
};

// "80000006 1f"
Version fromEnvironment()
{
    const char* const text = std::getenv("DRIVER_VERSION");
    if (!text)
        return {};
    char* rest = nullptr;
    const auto majorWord = static_cast<std::uint32_t>(std::strtoul(text, &rest, 16));
    return {majorWord, static_cast<std::uint32_t>(std::strtoul(rest, nullptr, 16))};
}

const Version version = fromEnvironment();

} // namespace

#if defined(_WIN32)
#define DRIVER_EXPORT extern "C" __declspec(dllexport)
#else
#define DRIVER_EXPORT extern "C" __attribute__((visibility("default")))
#endif

#if defined(DRIVER_HAS_VERSION)
DRIVER_EXPORT void KVDriverVersion(std::uint32_t* majorWord, std::uint32_t* minorWord)
{
    *majorWord = version.majorWord;
    *minorWord = version.minorWord;
}
#else
DRIVER_EXPORT std::uint32_t somethingElse()
{
    return version.majorWord + version.minorWord;
}
#endif
