// SPDX-License-Identifier: MIT
// Shows live images in the library's window: a complete host, with three kinds of sources to copy from.
#include "CameraSource.h"
#include "FileSource.h"
#include "Options.h"
#include "PatternSource.h"
#include "ViewerWindow.h"

#include <Vistrel/Application.h>

#include <cstdio>
#include <exception>

#if defined(_WIN32)
#include <windows.h>

#include <shellapi.h>
#endif

namespace {

std::unique_ptr<Vistrel::AbstractAcquisitionInterface> openSource(const Options& options)
{
    switch (options.source) {
    case Options::Source::Files:
        return std::make_unique<FileSource>(options.location, options.fps);
    case Options::Source::Camera:
        return openCamera(options.location, options.format);
    case Options::Source::Pattern:
        break;
    }
    return std::make_unique<PatternSource>(options.format.value_or(Vistrel::RGB8), options.size, options.fps);
}

QString titleOf(const Options& options)
{
    switch (options.source) {
    case Options::Source::Files:
        return options.location;
    case Options::Source::Camera:
        return options.location.isEmpty() ? QStringLiteral("Camera") : options.location;
    case Options::Source::Pattern:
        break;
    }
    return QStringLiteral("Test pattern");
}

#if defined(_WIN32)
// A program of windows has no standard streams, unless they were redirected: it takes the console of who started it.
void useConsole()
{
    const bool wantsOutput = _fileno(stdout) < 0;
    const bool wantsErrors = _fileno(stderr) < 0;
    if ((!wantsOutput && !wantsErrors) || !AttachConsole(ATTACH_PARENT_PROCESS))
        return;
    if (wantsOutput)
        std::freopen("CONOUT$", "w", stdout);
    if (wantsErrors) {
        std::freopen("CONOUT$", "w", stderr);
        std::setvbuf(stderr, nullptr, _IONBF, 0);
    }
}

// On the console that the program was started from, or, where there is none, in a box.
void complain(const QString& message)
{
    if (_fileno(stderr) >= 0)
        std::fprintf(stderr, "viewer: %s\n", qPrintable(message));
    else
        MessageBoxW(nullptr, reinterpret_cast<const wchar_t*>(message.utf16()), L"Vistrel Viewer", MB_ICONERROR);
}

// From the system: the C library's own have lost every letter that the 8-bit encoding does not know.
QStringList commandLine(int, char**)
{
    QStringList arguments;
    int count = 0;
    if (wchar_t** const values = CommandLineToArgvW(GetCommandLineW(), &count)) {
        for (int i = 0; i < count; ++i)
            arguments.append(QString::fromWCharArray(values[i]));
        LocalFree(values);
    }
    return arguments;
}
#else
void useConsole() {}

void complain(const QString& message)
{
    std::fprintf(stderr, "viewer: %s\n", qPrintable(message));
}

QStringList commandLine(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}
#endif

} // namespace

int main(int argc, char* argv[])
{
    useConsole();
    const QStringList arguments = commandLine(argc, argv);
    QString error;
    const std::optional<Options> options = parseOptions(arguments, &error);
    if (!options) {
        complain(QStringLiteral("%1\nTry viewer --help.").arg(error));
        return 2;
    }
    if (options->help) {
        std::fputs(qPrintable(helpText()), stdout);
        return 0;
    }

    try {
        Vistrel::Application application(argc, argv);
        Outcome outcome;
        auto* const window =
            new ViewerWindow(Vistrel::ScopedAcquisitionInterface(openSource(*options).release()), *options, &outcome);
        window->setWindowTitle(QStringLiteral("%1 - Vistrel Viewer").arg(titleOf(*options)));
        window->show();
        application.exec();
        std::printf("%s\n", qPrintable(outcome.statistics));
        return outcome.exitCode;
    } catch (const std::exception& failure) {
        complain(QString::fromLocal8Bit(failure.what()));
        return 1;
    }
}
