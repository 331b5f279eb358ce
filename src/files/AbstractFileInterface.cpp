// SPDX-License-Identifier: MIT
// The registry of a host's image file formats.
#include <Vistrel/AbstractFileInterface.h>

#include "base/TextOut.h"
#include "platform/LocalFileName.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace Vistrel {

namespace {

struct FileFormat
{
    std::set<std::string> extensions; // the primary and further ones, normalised
    std::string pattern;
};

// The functions of <cctype> depend on the locale.
char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isLetterOrDigit(char c)
{
    const char lower = lowerCase(c);
    return (lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9');
}

std::string_view textOf(const char* text)
{
    return text ? std::string_view(text) : std::string_view();
}

// With its dot, the letter case kept; empty when invalid.
std::string spelledExtension(std::string_view text)
{
    if (!text.empty() && text.front() == '.')
        text.remove_prefix(1);
    if (text.empty() || !std::all_of(text.begin(), text.end(), isLetterOrDigit))
        return {};
    return '.' + std::string(text);
}

// The form in which extensions are stored and compared; empty when invalid.
std::string normalisedExtension(std::string_view text)
{
    std::string extension = spelledExtension(text);
    std::transform(extension.begin(), extension.end(), extension.begin(), lowerCase);
    return extension;
}

} // namespace

struct AbstractFileInterface::PrivateData
{
    bool has(const std::string& extension) const
    {
        return std::any_of(formats.begin(), formats.end(),
                           [&](const auto& format) { return format.second.extensions.count(extension) > 0; });
    }

    mutable std::mutex mutex;                  // guards all below
    std::map<std::string, FileFormat> formats; // by primary extension, normalised
};

AbstractFileInterface::AbstractFileInterface() : m_data(new PrivateData) {}

AbstractFileInterface::~AbstractFileInterface() = default;

bool AbstractFileInterface::addFormat(const char* const extension, const char* const extensions,
                                      const char* const description)
{
    const std::string primary = normalisedExtension(textOf(extension));
    if (primary.empty())
        return false;

    FileFormat format;
    std::string_view rest = textOf(extensions);
    while (!rest.empty()) {
        const std::string_view part = rest.substr(0, rest.find(' '));
        rest.remove_prefix(std::min(part.size() + 1, rest.size()));
        if (part.empty())
            continue;
        std::string further = normalisedExtension(part);
        if (further.empty())
            return false;
        format.extensions.insert(std::move(further));
    }
    format.extensions.erase(primary);

    const std::string_view words = textOf(description);
    format.pattern = words.empty() ? spelledExtension(textOf(extension)) + " image file" : std::string(words);
    format.pattern += " (*" + primary;
    for (const std::string& further : format.extensions)
        format.pattern += " *" + further;
    format.pattern += ')';
    format.extensions.insert(primary);

    const std::lock_guard<std::mutex> guard(m_data->mutex);
    if (std::any_of(format.extensions.begin(), format.extensions.end(),
                    [this](const std::string& one) { return m_data->has(one); }))
        return false;
    return m_data->formats.emplace(primary, std::move(format)).second;
}

bool AbstractFileInterface::hasFormat(const char* const extension) const
{
    const std::string normalised = normalisedExtension(textOf(extension));
    const std::lock_guard<std::mutex> guard(m_data->mutex);
    return m_data->has(normalised);
}

bool AbstractFileInterface::queryFormats(std::size_t* const count, char* const buffer,
                                         std::size_t* const bufferSize) const
{
    if (buffer && !bufferSize)
        return false;
    const std::lock_guard<std::mutex> guard(m_data->mutex);
    std::string text;
    for (const auto& format : m_data->formats)
        text += (text.empty() ? "" : " ") + format.first;
    if (count)
        *count = m_data->formats.size();
    return !bufferSize || textOut(text, buffer, bufferSize);
}

bool AbstractFileInterface::queryFormatPattern(const char* const extension, char* const buffer,
                                               std::size_t* const bufferSize) const
{
    if (buffer && !bufferSize)
        return false;
    const std::string primary = normalisedExtension(textOf(extension));
    const std::lock_guard<std::mutex> guard(m_data->mutex);
    const auto found = m_data->formats.find(primary);
    return found != m_data->formats.end() && (!bufferSize || textOut(found->second.pattern, buffer, bufferSize));
}

void AbstractFileInterface::clearFormats()
{
    const std::lock_guard<std::mutex> guard(m_data->mutex);
    m_data->formats.clear();
}

int AbstractFileInterface::compareExtensions(const char* const first, const char* const second)
{
    const std::string one = normalisedExtension(textOf(first));
    const std::string other = normalisedExtension(textOf(second));
    if (one.empty() || other.empty())
        return std::numeric_limits<int>::min();
    const int order = std::memcmp(one.data(), other.data(), std::min(one.size(), other.size()));
    if (order != 0 || one.size() == other.size())
        return order;
    return one.size() < other.size() ? -1 : 1;
}

bool AbstractFileInterface::load(const char* const, FileIO* const)
{
    return false;
}

bool AbstractFileInterface::save(const RawImage&, const char* const)
{
    return false;
}

bool AbstractFileInterface::savesOnThread() const
{
    return false;
}

bool AbstractFileInterface::saveWide(const RawImage& image, const wchar_t* const fileName)
{
    LocalFileName name(QString::fromWCharArray(fileName));
    const bool isSaved = !name.bytes().isEmpty() && save(image, name.bytes().constData());
    if (isSaved)
        name.keepFile();
    return isSaved;
}

} // namespace Vistrel
