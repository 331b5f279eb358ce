// SPDX-License-Identifier: MIT
// The image file formats that a host loads and saves.
#pragma once

#include <Vistrel/BaseClass.h>
#include <Vistrel/RawImage.h>

#include <cstddef>
#include <memory>

namespace Vistrel {

class FileIO;

/// A host's own image files: a registry of their formats, and functions that load and save frames. A window offers the
/// registered formats when the user saves an image, and passes the frame as it was acquired.
///
/// A format is identified by its primary file extension and may have further ones. An extension consists of ASCII
/// letters and digits, with or without its leading dot, in any letter case.
///
/// The registry is thread-safe. `load` is called on the user-interface thread, and so are `save` and `saveWide` unless
/// `savesOnThread` says otherwise. The caller catches an exception that leaves them, reports it in one line on the
/// standard error stream, and counts it as failure.
class VISTREL_EXPORT AbstractFileInterface : public BaseClass
{
public:
    ~AbstractFileInterface() override;
    AbstractFileInterface(const AbstractFileInterface&) = delete;
    AbstractFileInterface& operator=(const AbstractFileInterface&) = delete;

    /// Registers a format. `extensions` lists further extensions, separated by spaces; it and `description` may be
    /// null. Repeated extensions count once. Returns false and changes nothing when an extension is invalid or
    /// registered already.
    bool addFormat(const char* const extension, const char* const extensions, const char* const description);

    /// Whether the extension is registered, as a primary or a further one.
    bool hasFormat(const char* const extension) const;

    /// Writes the number of formats to `count`, unless it is null, and their primary extensions (lower case, with dot,
    /// sorted, separated by single spaces) to `buffer`. `*bufferSize` is the buffer's capacity on entry and the text's
    /// length plus one on return. A text that is too long is cut and terminated; a null buffer only measures. Returns
    /// false and writes nothing only for a buffer without `bufferSize`.
    bool queryFormats(std::size_t* const count, char* const buffer, std::size_t* const bufferSize) const;

    /// Writes the file dialog's pattern of the format with this primary extension, such as "TIFF Image (*.tif *.tiff)",
    /// in the same way. ".tif image file" replaces a missing description. Also returns false for an unknown format.
    bool queryFormatPattern(const char* const extension, char* const buffer, std::size_t* const bufferSize) const;

    /// Removes all formats.
    void clearFormats();

    /// Compares two extensions by their bytes: 0 for two spellings of one extension, else negative or positive; the
    /// smallest `int` when either is invalid.
    static int compareExtensions(const char* const first, const char* const second);

    /// Reads a file of a registered format into `image`. `fileName` is in the local 8-bit encoding, here and below.
    /// Returns false by default.
    virtual bool load(const char* const fileName, FileIO* const image);

    /// Writes the frame, which is readable until this returns, to a file of a registered format. Returns false by
    /// default. Without `savesOnThread` the pixels are the source's own buffer: its lock is held during the call, the
    /// window shows no pixel values, and the source may have to delay its next frame. It is not called while a command
    /// runs, which may block that lock: the user is told that the image cannot be accessed. On Windows the name may be
    /// the file's short name ("WUMEGA~1.TIF"), and an empty file of that name may exist.
    virtual bool save(const RawImage& image, const char* const fileName);

    /// Whether `save` may be called on any thread, with a copy of the frame, while the window continues. The call
    /// returns before the interface is destroyed, and must open no window or message box. Returns false by default.
    virtual bool savesOnThread() const;

    /// Called by a window to save: as `save`, with the whole name in wide characters. On Windows these are UTF-16, and
    /// only they can name every file. By default calls `save` with the name in the local 8-bit encoding, and returns
    /// false when there is no such name.
    virtual bool saveWide(const RawImage& image, const wchar_t* const fileName);

protected:
    AbstractFileInterface();

private:
    struct VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
