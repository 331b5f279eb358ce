// SPDX-License-Identifier: MIT
// The table of the pixel formats.
#include "pipeline/pixels/PixelFormats.h"

#include "pipeline/pixels/Demosaic.h"
#include "pipeline/pixels/ThreadableCopy.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace Vistrel {

namespace {

using Byte = unsigned char;
using Word = unsigned short;

const std::uint8_t* pixelAt(const RawImage& raw, std::size_t row, std::size_t x)
{
    return raw.data + (row * raw.width + x) * bytesPerPixel(raw.format);
}

// Layouts -------------------------------------------------------------------------------------------------------------

template <std::size_t samples>
void unpackBytes(const RawImage& raw, std::size_t row, std::size_t first, std::size_t count, std::uint16_t* target)
{
    std::copy_n(pixelAt(raw, row, first), samples * count, target);
}

template <std::size_t samples>
bool packBytes(const RawImage& raw, const std::uint16_t* source, std::uint8_t* row)
{
    std::transform(source, source + samples * raw.width, row, [](auto sample) { return static_cast<Byte>(sample); });
    return true;
}

template <std::size_t samples>
void unpackWords(const RawImage& raw, std::size_t row, std::size_t first, std::size_t count, std::uint16_t* target)
{
    std::memcpy(target, pixelAt(raw, row, first), samples * count * sizeof *target);
}

template <std::size_t samples>
bool packWords(const RawImage& raw, const std::uint16_t* source, std::uint8_t* row)
{
    std::memcpy(row, source, samples * raw.width * sizeof *source);
    return true;
}

template <std::uint32_t packing>
void unpackGroups(const RawImage& raw, std::size_t row, std::size_t first, std::size_t count, std::uint16_t* target)
{
    Kernels::PixelRun run;
    run.source = pixelAt(raw, row, 0) + first / 4 * 5;
    run.end = frameEnd(raw);
    run.target = reinterpret_cast<std::uint8_t*>(target);
    run.count = count;
    run.ahead = 2 * raw.width;
    packing == Packedp ? Kernels::packed10ToWords(run) : Kernels::packed10NoSwapToWords(run);
}

template <std::uint32_t packing>
bool packGroups(const RawImage& raw, const std::uint16_t* source, std::uint8_t* row)
{
    const std::uint8_t* const end = frameEnd(raw);
    for (std::size_t x = 0; x < raw.width; x += 4, row += 5) {
        std::uint64_t word = 0;
        for (std::size_t i = 0; i < 4 && x + i < raw.width; ++i) {
            if (source[x + i] > 0x3FF)
                return false;
            word |= std::uint64_t{source[x + i]} << (54 - 10 * i);
        }
        for (std::size_t i = 0; i < 8 && row + i < end; ++i)
            row[i] = static_cast<Byte>(row[i] | word >> 8 * (packing == Packedp ? 7 - i : i));
    }
    return true;
}

void unpackFields(const RawImage& raw, std::size_t row, std::size_t first, std::size_t count, std::uint16_t* target)
{
    Color30Iterator pixel(pixelAt(raw, row, first));
    for (; count > 0; --count, ++pixel) {
        for (unsigned i = 0; i < 3; ++i)
            *target++ = static_cast<Word>(*pixel >> 10 * i & 0x3FF);
    }
}

bool packFields(const RawImage& raw, const std::uint16_t* source, std::uint8_t* row)
{
    for (std::size_t x = 0; x < raw.width; ++x, source += 3, row += 4) {
        if (std::any_of(source, source + 3, [](auto sample) { return sample > 0x3FF; }))
            return false;
        const std::uint32_t word = source[0] | std::uint32_t{source[1]} << 10 | std::uint32_t{source[2]} << 20;
        std::memcpy(row, &word, sizeof word);
    }
    return true;
}

constexpr PixelLayout bytes1{1, 8, 1, false, unpackBytes<1>, packBytes<1>};
constexpr PixelLayout bytes3{3, 24, 3, false, unpackBytes<3>, packBytes<3>};
constexpr PixelLayout bytes4{4, 32, 4, false, unpackBytes<4>, packBytes<4>};
constexpr PixelLayout words1{2, 16, 1, false, unpackWords<1>, packWords<1>};
constexpr PixelLayout words3{6, 48, 3, false, unpackWords<3>, packWords<3>};
constexpr PixelLayout groups{2, 10, 1, true, unpackGroups<Packedp>, packGroups<Packedp>};
constexpr PixelLayout groupsNoSwap{2, 16, 1, true, unpackGroups<PackedNoSwap>, packGroups<PackedNoSwap>};
constexpr PixelLayout fields{4, 32, 3, true, unpackFields, packFields};

// Conversions ---------------------------------------------------------------------------------------------------------

template <typename T, int shift, typename Iterator = const T*>
constexpr PictureConversion gray{ThreadableCopyGray<T, shift, Iterator>::copyRows, false, 1, 1};

template <typename T, int channels, int shift, typename Iterator = const T*>
constexpr PictureConversion color{ThreadableCopyColor<T, channels, shift, Iterator>::copyRows, true, 1, 1};

// Takes twice as long as a copy. Four rows more are loaded than a call converts.
constexpr PictureConversion mosaic{interpolateRows, true, 2, 16};

constexpr PixelFormat oneChannel(Format code, const char* name, unsigned bits, const PixelLayout& layout,
                                 const PictureConversion& conversion)
{
    return {code, bits, name, &layout, false, (code & formatPatternMask) != 0 ? mosaic : conversion};
}

// The table -----------------------------------------------------------------------------------------------------------

// A code is shown as the first of the formats that it has the fields of.
#define VISTREL_ONE_CHANNEL(kind)                                                                                      \
    oneChannel(kind##8, #kind "8", 8, bytes1, gray<Byte, 0>),                                                          \
        oneChannel(kind##10p, #kind "10p", 10, groups, gray<Word, 0, Gray10PackedIterator<Packedp>>),                  \
        oneChannel(kind##10p_NoSwap, #kind "10p_NoSwap", 10, groupsNoSwap,                                             \
                   gray<Word, 0, Gray10PackedIterator<PackedNoSwap>>),                                                 \
        oneChannel(kind##10, #kind "10", 10, words1, gray<Word, 2>),                                                   \
        oneChannel(kind##12, #kind "12", 12, words1, gray<Word, 4>),                                                   \
        oneChannel(kind##14, #kind "14", 14, words1, gray<Word, 6>),                                                   \
        oneChannel(kind##16, #kind "16", 16, words1, gray<Word, 8>)

constexpr PixelFormat formats[] = {
    VISTREL_ONE_CHANNEL(Mono),
    VISTREL_ONE_CHANNEL(BayerGB),
    VISTREL_ONE_CHANNEL(BayerGR),
    VISTREL_ONE_CHANNEL(BayerRG),
    VISTREL_ONE_CHANNEL(BayerBG),
    {BGR8, 8, "BGR8", &bytes3, true, color<Byte, 3, 0>},
    {RGB8, 8, "RGB8", &bytes3, false, color<Byte, 3, 0>},
    {BGR10p32, 10, "BGR10p32", &fields, false, color<unsigned, 1, 2, Color30Iterator>},
    {RGB10p32, 10, "RGB10p32", &fields, true, color<unsigned, 1, 2, Color30Iterator>},
    {BGRa8, 8, "BGRa8", &bytes4, true, color<Byte, 4, 0>},
    {RGBa8, 8, "RGBa8", &bytes4, false, color<Byte, 4, 0>},
    {BGR12, 12, "BGR12", &words3, true, color<Word, 3, 4>},
    {RGB12, 12, "RGB12", &words3, false, color<Word, 3, 4>},
    {BGR14, 14, "BGR14", &words3, true, color<Word, 3, 6>},
    {RGB14, 14, "RGB14", &words3, false, color<Word, 3, 6>},
    {BGR16, 16, "BGR16", &words3, true, color<Word, 3, 8>},
    {RGB16, 16, "RGB16", &words3, false, color<Word, 3, 8>},
};

#undef VISTREL_ONE_CHANNEL

// What tells a format from others: optional fields count where they are set.
constexpr std::uint32_t tellingFields(Format code)
{
    return formatDepthMask | formatLayoutMask | (isMonochrome(code) ? formatPatternMask : 0) |
           ((code & formatOrderMask) != 0 ? formatOrderMask : 0) |
           ((code & formatPackingMask) != 0 ? formatPackingMask : 0);
}

constexpr bool agreesWithHeader()
{
    for (const PixelFormat& format : formats) {
        const unsigned samples = isColor(format.code) ? (format.layout == &bytes4 ? 4 : 3) : 1;
        if (format.layout->bytesPerPixel != bytesPerPixel(format.code) || format.layout->samples != samples ||
            format.bits * samples != formatDepth(format.code))
            return false;
    }
    return true;
}
static_assert(agreesWithHeader());

} // namespace

const PixelFormat* findFormat(Format code)
{
    const auto* const found = std::find_if(std::begin(formats), std::end(formats), [code](const PixelFormat& format) {
        return (code & tellingFields(format.code)) == format.code;
    });
    return found == std::end(formats) ? nullptr : found;
}

Format plainFormat(Format code)
{
    const PixelFormat* const format = findFormat(code);
    return format ? format->code : code;
}

std::uint32_t channelMaximum(Format code)
{
    const PixelFormat* const format = findFormat(code);
    return format ? (1u << format->bits) - 1 : 0;
}

bool hasPixelBytes(std::size_t width, std::size_t height, std::size_t bytes)
{
    constexpr auto longest = static_cast<std::size_t>(std::numeric_limits<int>::max());
    constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    return bytes > 0 && width > 0 && height > 0 && width <= longest && height <= longest && width <= longest / bytes &&
           height <= most / (width * bytes);
}

bool isReadable(const RawImage& raw)
{
    const PixelFormat* const format = findFormat(raw.format);
    return format && hasPixelBytes(raw.width, raw.height, format->layout->bytesPerPixel);
}

const std::uint8_t* frameEnd(const RawImage& raw)
{
    const PixelLayout& layout = *findFormat(raw.format)->layout;
    return raw.data + (raw.height - 1) * raw.width * layout.bytesPerPixel + (raw.width * layout.bitsPerPixel + 7) / 8;
}

const char* formatName(Format format)
{
    const PixelFormat* const found = findFormat(format);
    return found ? found->name : nullptr;
}

bool formatFromName(const char* name, Format* format)
{
    if (!name || !format)
        return false;
    const auto* const found = std::find_if(std::begin(formats), std::end(formats), [name](const PixelFormat& named) {
        return std::strcmp(named.name, name) == 0;
    });
    if (found == std::end(formats))
        return false;
    *format = found->code;
    return true;
}

} // namespace Vistrel
