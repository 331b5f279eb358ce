// SPDX-License-Identifier: MIT
// The viewer's output.
#include "Console.h"

#include <cstdio>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

#if defined(_WIN32)
using Console = HANDLE;

// Whether output to the stream is lost: it is not connected, or to a console to which this program may not be attached.
bool leadsNowhere(DWORD stream)
{
    const HANDLE handle = GetStdHandle(stream);
    DWORD mode = 0;
    return GetFileType(handle) == FILE_TYPE_UNKNOWN || GetConsoleMode(handle, &mode);
}
#else
using Console = const void*;
#endif

Console outputConsole = nullptr; // null when the standard stream is used
Console errorConsole = nullptr;

void write(std::FILE* stream, [[maybe_unused]] Console console, const QString& line)
{
#if defined(_WIN32)
    if (console) {
        const QString text = line + QLatin1Char('\n');
        DWORD written = 0;
        WriteConsoleW(console, text.utf16(), DWORD(text.size()), &written, nullptr);
        return;
    }
#endif
    std::fprintf(stream, "%s\n", qPrintable(line));
}

} // namespace

bool useConsole()
{
#if defined(_WIN32)
    // Wine has already attached it.
    if (!AttachConsole(ATTACH_PARENT_PROCESS) && GetLastError() != ERROR_ACCESS_DENIED)
        return GetFileType(GetStdHandle(STD_ERROR_HANDLE)) != FILE_TYPE_UNKNOWN;
    SetConsoleCtrlHandler(nullptr, TRUE); // the console runs other programs meanwhile, which Ctrl+C is for
    const HANDLE console = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, 0, nullptr);
    if (console == INVALID_HANDLE_VALUE)
        return GetFileType(GetStdHandle(STD_ERROR_HANDLE)) != FILE_TYPE_UNKNOWN;
    if (leadsNowhere(STD_OUTPUT_HANDLE))
        outputConsole = console;
    if (leadsNowhere(STD_ERROR_HANDLE)) {
        errorConsole = console;
        if (std::freopen("CONOUT$", "w", stderr)) // for the library's messages
            std::setvbuf(stderr, nullptr, _IONBF, 0);
    }
#endif
    return true;
}

void printLine(const QString& line)
{
    write(stdout, outputConsole, line);
}

void printError(const QString& line)
{
    write(stderr, errorConsole, QStringLiteral("viewer: %1").arg(line));
}
