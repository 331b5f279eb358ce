// SPDX-License-Identifier: MIT
// Shows live images in the library's window: a complete host, with three kinds of sources to copy from.
#include "CameraSource.h"
#include "Console.h"
#include "FileSource.h"
#include "Options.h"
#include "PatternSource.h"
#include "ViewerWindow.h"

#include <Vistrel/Application.h>

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
void showBox(const QString& message)
{
    MessageBoxW(nullptr, reinterpret_cast<const wchar_t*>(message.utf16()), L"Vistrel Viewer", MB_ICONERROR);
}

// From the system: the arguments of `main` have lost all characters that the 8-bit encoding lacks.
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
void showBox(const QString&) {}

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
    const bool isHeard = useConsole();
    const auto complain = [isHeard](const QString& message) { isHeard ? printError(message) : showBox(message); };
    const QStringList arguments = commandLine(argc, argv);
    QString error;
    const std::optional<Options> options = parseOptions(arguments, &error);
    if (!options) {
        complain(QStringLiteral("%1\nTry viewer --help.").arg(error));
        return 2;
    }
    if (options->help) {
        printLine(helpText());
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
        printLine(outcome.statistics);
        return outcome.exitCode;
    } catch (const std::exception& failure) {
        complain(QString::fromLocal8Bit(failure.what()));
        return 1;
    }
}
