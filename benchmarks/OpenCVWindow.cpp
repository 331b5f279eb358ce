// SPDX-License-Identifier: MIT
// Shows frames in OpenCV's window: WIDTH HEIGHT CHANNELS WARM-UP COUNT. Prints the processor time and the time of one
// of COUNT frames, in milliseconds.
#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QObject>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* windowName = "frames";
constexpr auto patience = std::chrono::seconds(10);

/// Counts the paint events of the window's view, if OpenCV uses Qt.
class Paintings : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && watched->parent() && watched->parent()->inherits("QGraphicsView"))
            ++count;
        return false;
    }
};

double cpuMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

/// Shows each frame after the previous one was painted.
bool show(const std::vector<cv::Mat>& frames, int count, const Paintings* paintings)
{
    for (int i = 0; i < count; ++i) {
        const int before = paintings ? paintings->count : 0;
        const auto start = Clock::now();
        cv::imshow(windowName, frames[static_cast<std::size_t>(i) % frames.size()]);
        do
            cv::pollKey();
        while (paintings && paintings->count == before && Clock::now() - start < patience);
        if (paintings && paintings->count == before)
            return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 6)
        return 2;
    const cv::Size size(std::atoi(argv[1]), std::atoi(argv[2]));
    const int warmUp = std::atoi(argv[4]);
    const int count = std::atoi(argv[5]);
    std::vector<cv::Mat> frames(3);
    for (cv::Mat& frame : frames) {
        frame.create(size, CV_8UC(std::atoi(argv[3])));
        cv::randu(frame, 0, 256);
    }

    cv::namedWindow(windowName, cv::WINDOW_NORMAL | cv::WINDOW_KEEPRATIO | cv::WINDOW_GUI_NORMAL);
    cv::resizeWindow(windowName, 1280, 960);
    Paintings paintings;
    if (qApp)
        qApp->installEventFilter(&paintings);
    const Paintings* const watched = qApp ? &paintings : nullptr;
    if (!show(frames, warmUp, watched))
        return 1;
    const cv::Rect area = cv::getWindowImageRect(windowName);
    if (area.width < 1279 || area.width > 1281) {
        std::fprintf(stderr, "the image has %d x %d pixels on the screen\n", area.width, area.height);
        return 1;
    }

    const double cpu = cpuMilliseconds();
    const auto start = Clock::now();
    if (!show(frames, count, watched))
        return 1;
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
    std::printf("%f %f\n", (cpuMilliseconds() - cpu) / count, elapsed.count() / count);
    return 0;
}
