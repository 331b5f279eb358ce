// SPDX-License-Identifier: MIT
// A file interface that saves frames at full depth.
#pragma once

#include <Vistrel/AbstractFileInterface.h>

namespace Vistrel {

/// Registers ".png" and writes the acquired frame instead of the displayed image, lossless as `FileIO` describes, on a
/// thread of the window. Refuses names with another suffix. Thread-safe.
class VISTREL_EXPORT PngFileInterface final : public AbstractFileInterface
{
public:
    PngFileInterface();
    ~PngFileInterface() override;

    bool load(const char* const fileName, FileIO* const image) override;
    bool save(const RawImage& image, const char* const fileName) override;
    bool savesOnThread() const override;
    bool saveWide(const RawImage& image, const wchar_t* const fileName) override;
};

} // namespace Vistrel
