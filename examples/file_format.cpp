// SPDX-License-Identifier: MIT
// A host's own image files, offered by "Save Image" and loaded again: file_format [FILE.frame]
#include <Vistrel/AbstractFileInterface.h>
#include <Vistrel/Application.h>
#include <Vistrel/FileIO.h>
#include <Vistrel/ImperativeAcquisitionInterface.h>
#include <Vistrel/Window.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace {

/// Files with one line of text, such as "FRAME Mono16 640 480", followed by the pixels.
class FrameFiles final : public Vistrel::AbstractFileInterface
{
public:
    FrameFiles() { addFormat(".frame", nullptr, "Camera Frame"); }

    bool save(const Vistrel::RawImage& image, const char* const fileName) override
    {
        const char* const format = Vistrel::formatName(image.format);
        if (!format)
            return false;
        std::ofstream file(fileName, std::ios::binary);
        file << "FRAME " << format << ' ' << image.width << ' ' << image.height << '\n';
        file.write(reinterpret_cast<const char*>(image.data),
                   static_cast<std::streamsize>(image.width * image.height * bytesPerPixel(image.format)));
        file.close();
        return file.good();
    }

    bool load(const char* const fileName, Vistrel::FileIO* const image) override
    {
        constexpr std::size_t longestSide = 32768;
        std::ifstream file(fileName, std::ios::binary);
        std::string mark;
        std::string format;
        Vistrel::RawImage frame;
        file >> mark >> format >> frame.width >> frame.height;
        if (!file || mark != "FRAME" || !formatFromName(format.c_str(), &frame.format) || file.get() != '\n' ||
            frame.width > longestSide || frame.height > longestSide)
            return false;
        std::vector<std::uint8_t> pixels(frame.width * frame.height * bytesPerPixel(frame.format));
        if (!file.read(reinterpret_cast<char*>(pixels.data()), static_cast<std::streamsize>(pixels.size())))
            return false;
        frame.data = pixels.data();
        return image->setData(frame); // copies the pixels
    }
};

/// One picture that does not change.
class Picture final : public Vistrel::ImperativeAcquisitionInterface
{
public:
    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }

    void show()
    {
        Vistrel::RawImage frame;
        setFramesLocked(true);
        if (file.getData(frame))
            setNextFrame(frame);
    }

    Vistrel::FileIO file; // holds the pixels
};

bool drawRamp(Vistrel::FileIO* image)
{
    constexpr std::size_t width = 640;
    constexpr std::size_t height = 480;
    std::vector<std::uint16_t> pixels(width * height);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint16_t>(i % width * 100);
    return image->setData(
        {reinterpret_cast<const std::uint8_t*>(pixels.data()), width, height, Vistrel::Mono16, nullptr});
}

} // namespace

int main(int argc, char** argv)
{
    Vistrel::Application application(argc, argv);
    Vistrel::ScopedFileInterface files(new FrameFiles);
    auto* const picture = new Picture;
    Vistrel::ScopedAcquisitionInterface source(picture);

    if (argc > 1 ? !files->load(argv[1], &picture->file) : !drawRamp(&picture->file)) {
        std::fprintf(stderr, "file_format: there is no picture to show\n");
        return 1;
    }
    picture->show();

    Vistrel::Window window(std::move(source), std::move(files));
    window.setTitle("A file format of my own");
    window.show();
    return application.exec();
}
