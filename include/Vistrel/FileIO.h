// SPDX-License-Identifier: MIT
// One frame that can be loaded from an image file and saved to one.
#pragma once

#include <Vistrel/BaseClass.h>
#include <Vistrel/RawImage.h>

#include <memory>
#include <string_view>

namespace Vistrel {

/// Holds a copy of one frame, and reads and writes it as PNG (".png"), JPEG (".jpg", ".jpeg") or BMP (".bmp"); the
/// file name's suffix chooses. A file name is in the local 8-bit encoding or in wide characters. On Windows only wide
/// characters, which are UTF-16, can name every file. `load(path.c_str())` with a `std::filesystem::path` works on
/// every system.
///
/// PNG is lossless for every `Format`: a loaded frame has the bytes and the format of the saved one. Other programs can
/// open the file: one-channel formats (mosaics as they are) of more than 8 bits are 16-bit grey, colour formats of more
/// than 8 bits a channel are 16-bit RGB, and samples keep their values, so 12 bits end at 4095. The fourth byte of
/// 32-bit pixels is alpha; a frame in which it is zero everywhere is stored without alpha, because it would be
/// invisible. The text field "Vistrel Format" names the format. Bits of the frame that belong to no sample are stored
/// in chunks "vsBT" where they are not zero.
///
/// JPEG and BMP hold the most significant 8 bits of grey (mosaics as they are) or of red, green and blue.
///
/// A file without the text field, or with one that does not fit its pixels, is loaded as the closest format: `Mono8`,
/// `Mono16`, `RGB8`, `RGBa8`, or `RGB16` (with 16 bits a channel, alpha is dropped).
///
/// Images of more than 2^28 pixels, PNG of more than 1,000,000 in a row or column, and JPEG of more than 65,500, are
/// neither saved nor loaded; nor is JPEG of more than 64 scans loaded. Loading takes at most four times the frame's
/// bytes and 64 MB of memory for any file. Reentrant.
class VISTREL_EXPORT FileIO : public BaseClass
{
public:
    FileIO();
    /// Copies the frame as `setData` does; holds none when that fails.
    explicit FileIO(const RawImage& image);
    ~FileIO() override;
    FileIO(const FileIO&) = delete;
    FileIO& operator=(const FileIO&) = delete;

    bool hasData() const;

    /// Copies the frame's pixels and stores `userData` with them. Fields of the format's code that mean nothing are
    /// dropped. Returns false and keeps the previous frame when `data` is null, the size is zero or too large to count
    /// its bytes, the format has no name, or memory runs out. Of a packed frame it reads only the bytes that the last
    /// row needs; those after them count as zero.
    bool setData(const RawImage& image);

    /// Describes the frame held. This object owns its pixels: they are valid until another frame is set or loaded, or
    /// this object is destroyed. Returns false and leaves `image` unchanged when there is none.
    bool getData(RawImage& image) const;

    /// Replaces the frame held by that of a file. Returns false and keeps the previous frame when the file cannot be
    /// read, is damaged or cut, or is of another type than its suffix says.
    bool load(const char* const fileName);
    bool load(std::wstring_view fileName);

    /// Writes the frame held, and waits until the bytes are on the disk. The file appears, or replaces an older one,
    /// only when it is complete; in a folder where no file can be created, the older one is overwritten. Returns false
    /// and leaves an older file unchanged when there is no frame, the suffix is unknown, the disk is full, or the file
    /// cannot be written.
    bool save(const char* const fileName) const;
    bool save(std::wstring_view fileName) const;

private:
    struct VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
