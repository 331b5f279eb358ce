// SPDX-License-Identifier: MIT
// The viewer's command line.
#include "Options.h"

#include <QtCore/QCommandLineParser>

namespace {

std::optional<QSize> sizeFromText(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char('x'));
    if (parts.size() != 2)
        return std::nullopt;
    const int width = parts[0].toInt();
    const int height = parts[1].toInt();
    if (width < 16 || height < 16 || width > 8192 || height > 8192)
        return std::nullopt;
    return QSize(width, height);
}

} // namespace

QString helpText()
{
    return QStringLiteral(R"(Usage: viewer [options]
       viewer --source files DIR [options]
       viewer --source camera [NAME] [options]

Shows live images in a window.

  --source pattern   a moving test picture (default)
  --source files     the PNG, PGM and JPEG pictures of a folder, in name order, again and again
  --source camera    a GigE Vision or USB3 Vision camera: the one named, or the first one found
  --format NAME      pixel format, such as Mono12, BayerRG8, RGB8 (pattern: default RGB8; camera: asked of the camera)
  --size WxH         size of the test picture, 16x16 to 8192x8192 (default 1280x960)
  --fps N            frames a second of pattern and files, 0.1 to 1000 (default 60)
  --zoom PERCENT     zoom at the start, 1 to 10000 (default: to fit)
  --frames N         quit after N frames were shown
  --screenshot FILE  save the window when it closes
  --help             show this text

The menus tell the keys. The wheel zooms, a drag pans, a double click changes between fit and 100 %, the middle button
draws a rectangle to zoom to, and Backspace goes back.)");
}

std::optional<Options> parseOptions(const QStringList& arguments, QString* error)
{
    const QString none;
    const QCommandLineOption source(QStringLiteral("source"), none, QStringLiteral("kind"), QStringLiteral("pattern"));
    const QCommandLineOption format(QStringLiteral("format"), none, QStringLiteral("name"));
    const QCommandLineOption size(QStringLiteral("size"), none, QStringLiteral("size"));
    const QCommandLineOption fps(QStringLiteral("fps"), none, QStringLiteral("rate"));
    const QCommandLineOption zoom(QStringLiteral("zoom"), none, QStringLiteral("percent"));
    const QCommandLineOption frames(QStringLiteral("frames"), none, QStringLiteral("count"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"), none, QStringLiteral("file"));
    const QCommandLineOption help(QStringList{QStringLiteral("help"), QStringLiteral("h")});
    QCommandLineParser parser;
    parser.addOptions({source, format, size, fps, zoom, frames, screenshot, help});

    const auto wrong = [error](const QString& text) {
        *error = text;
        return std::nullopt;
    };
    if (!parser.parse(arguments))
        return wrong(parser.errorText());

    Options options;
    options.help = parser.isSet(help);
    options.screenshot = parser.value(screenshot);

    const QString kind = parser.value(source);
    const QStringList names = parser.positionalArguments();
    if (kind == QLatin1String("files"))
        options.source = Options::Source::Files;
    else if (kind == QLatin1String("camera"))
        options.source = Options::Source::Camera;
    else if (kind != QLatin1String("pattern"))
        return wrong(QStringLiteral("unknown source \"%1\": use pattern, files or camera").arg(kind));
    if (options.source == Options::Source::Files && names.isEmpty())
        return wrong(QStringLiteral("--source files needs a folder"));
    const int namesTaken = options.source == Options::Source::Pattern ? 0 : 1;
    if (names.size() > namesTaken)
        return wrong(QStringLiteral("unexpected argument \"%1\"").arg(names[namesTaken]));
    options.location = names.value(0);

    if (parser.isSet(format)) {
        Vistrel::Format value{};
        if (options.source == Options::Source::Files)
            return wrong(QStringLiteral("--format does not go with --source files: the files tell theirs"));
        if (!Vistrel::formatFromName(parser.value(format).toLatin1().constData(), &value))
            return wrong(QStringLiteral("unknown pixel format \"%1\"").arg(parser.value(format)));
        options.format = value;
    }
    if (parser.isSet(size)) {
        const std::optional<QSize> value = sizeFromText(parser.value(size));
        if (options.source != Options::Source::Pattern)
            return wrong(QStringLiteral("--size goes with --source pattern alone"));
        if (!value)
            return wrong(QStringLiteral("--size must be WxH, from 16x16 to 8192x8192"));
        options.size = *value;
    }
    if (parser.isSet(fps)) {
        options.fps = parser.value(fps).toDouble();
        if (options.source == Options::Source::Camera)
            return wrong(QStringLiteral("--fps does not go with --source camera: the camera sets the pace"));
        if (!(options.fps >= 0.1 && options.fps <= 1000))
            return wrong(QStringLiteral("--fps must be a number from 0.1 to 1000"));
    }
    if (parser.isSet(zoom)) {
        options.zoom = parser.value(zoom).toDouble();
        if (!(options.zoom >= 1 && options.zoom <= 10000))
            return wrong(QStringLiteral("--zoom must be a number from 1 to 10000"));
    }
    if (parser.isSet(frames)) {
        options.frames = parser.value(frames).toULongLong();
        if (options.frames == 0)
            return wrong(QStringLiteral("--frames must be a whole number above 0"));
    }
    return options;
}
