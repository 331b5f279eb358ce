// SPDX-License-Identifier: MIT
// Where the viewer writes what it has to say.
#include "Console.h"

#include <cstdio>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

#if defined(_WIN32)
using Console = HANDLE;

// Whether what is written there is lost: there is nothing, or a console that this program may not be attached to.
bool leadsNowhere(DWORD stream)
{
    const HANDLE handle = GetStdHandle(stream);
    DWORD mode = 0;
    return GetFileType(handle) == FILE_TYPE_UNKNOWN || GetConsoleMode(handle, &mode);
}
#else
using Console = const void*;
#endif

Console outputConsole = nullptr; // null where the standard stream is written to
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
    // Wine has attached it already.
    if (!AttachConsole(ATTACH_PARENT_PROCESS) && GetLastError() != ERROR_ACCESS_DENIED)
        return GetFileType(GetStdHandle(STD_ERROR_HANDLE)) != FILE_TYPE_UNKNOWN;
    SetConsoleCtrlHandler(nullptr, TRUE); // the console has gone on meanwhile: its Ctrl+C is meant for others
    const HANDLE console = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, 0, nullptr);
    if (console == INVALID_HANDLE_VALUE)
        return GetFileType(GetStdHandle(STD_ERROR_HANDLE)) != FILE_TYPE_UNKNOWN;
    if (leadsNowhere(STD_OUTPUT_HANDLE))
        outputConsole = console;
    if (leadsNowhere(STD_ERROR_HANDLE)) {
        errorConsole = console;
        if (std::freopen("CONOUT$", "w", stderr)) // for what the library has to say
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
