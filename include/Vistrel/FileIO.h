// SPDX-License-Identifier: MIT
// One frame that can be loaded from an image file and saved to one.
#pragma once

#include <Vistrel/BaseClass.h>
#include <Vistrel/RawImage.h>

#include <memory>
#include <string_view>

namespace Vistrel {

/// Holds a copy of one frame, and reads and writes it as PNG (".png"), JPEG (".jpg", ".jpeg") or BMP (".bmp"); the
/// file name's suffix chooses. A file name is in the local 8-bit encoding or in wide characters; on Windows only these,
/// which are the system's own (UTF-16), can name every file. `load(path.c_str())` with a `std::filesystem::path` takes
/// the system's own characters everywhere.
///
/// PNG is lossless for every `Format`: a loaded frame has the bytes and the format of the saved one. Any other program
/// opens the file, too: one-channel formats (mosaics as they are) of more than 8 bits are 16-bit grey, colour formats
/// of more than 8 bits a channel are 16-bit RGB, and samples keep their values, so 12 bits end at 4095. The fourth byte
/// of 32-bit pixels is alpha; a frame in which it is zero everywhere is stored without, or nothing could be seen of it.
/// The text field "Vistrel Format" names the format; bits of the frame that belong to no sample follow in chunks of
/// their own ("vsBT") where they are not zero.
///
/// JPEG and BMP hold the most significant 8 bits of grey (mosaics as they are) or of red, green and blue.
///
/// A file without the text field, or whose field cannot be true, is loaded as the closest format: `Mono8`, `Mono16`,
/// `RGB8`, `RGBa8`, or `RGB16` (with 16 bits a channel, alpha is dropped).
///
/// Images of more than 2^28 pixels, PNG of more than 1,000,000 in a row or column, and JPEG of more than 65,500, are
/// neither saved nor loaded; nor is JPEG of more than 64 scans loaded. Loading takes no more memory than four times the
/// frame's bytes and 64 MB, whatever the file holds. Reentrant.
class VISTREL_EXPORT FileIO : public BaseClass
{
public:
    FileIO();
    /// Copies the frame, as `setData` does; without data when that fails.
    explicit FileIO(const RawImage& image);
    ~FileIO() override;
    FileIO(const FileIO&) = delete;
    FileIO& operator=(const FileIO&) = delete;

    bool hasData() const;

    /// Copies the frame's pixels; `userData` is kept with them. Of the format's code, fields without meaning are left
    /// out. False, and the frame held before stays, when `data` is
    /// null, the size is zero or its bytes cannot be counted, the format has no name, or there is no memory. Of a
    /// packed frame no more is read than its last row needs; what follows counts as zero.
    bool setData(const RawImage& image);

    /// Describes the frame held. Its pixels stay this object's: they are valid until another frame is set or loaded, or
    /// this object is destroyed. False, and `image` unchanged, when there is none.
    bool getData(RawImage& image) const;

    /// Replaces the frame held by that of a file. False, and the frame held before stays, when the file cannot be read
    /// or is damaged, cut or not what its suffix says.
    bool load(const char* const fileName);
    bool load(std::wstring_view fileName);

    /// Writes the frame held. The file appears, or replaces an older one, only when it is whole; where the folder takes
    /// no new file, the older one is overwritten. False, and an older file as it was, when there is no frame, the
    /// suffix is unknown, the disk is full, or the file cannot be written. Waits until the bytes are on the disk.
    bool save(const char* const fileName) const;
    bool save(std::wstring_view fileName) const;

private:
    struct VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
