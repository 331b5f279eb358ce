// SPDX-License-Identifier: MIT
// The smallest host: pushes one frame and succeeds when the surface shows it.
#include <Vistrel/Application.h>
#include <Vistrel/ImperativeAcquisitionInterface.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QSize>

#include <cstdio>

namespace {

class Source : public Vistrel::ImperativeAcquisitionInterface
{
public:
    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }
};

} // namespace

int main(int argc, char** argv)
{
    Vistrel::Application application(argc, argv);
    static const unsigned char pixels[12] = {0, 20, 40, 60, 80, 100, 120, 140, 160, 180, 200, 220};
    Source source;
    source.setFramesLocked(true);
    source.setNextFrame(pixels, 4, 3, Vistrel::Mono8, nullptr);
    Vistrel::Surface surface;
    Vistrel::SurfaceStream stream(&surface, &source);
    QObject::connect(&stream, &Vistrel::SurfaceStream::imageUpdated, &surface, [&] {
        const QSize size = surface.pixmap().size();
        std::printf("Frame of %d x %d\n", size.width(), size.height());
        application.exit(size == QSize(4, 3) ? 0 : 1);
    });
    return application.exec();
}
