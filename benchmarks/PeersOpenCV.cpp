// SPDX-License-Identifier: MIT
// Conversions by OpenCV. Those that use one thread are split by rows over the same threads as ours.
#include "Peers.h"

#include <opencv2/imgproc.hpp>

#include <memory>
#include <utility>

namespace Bench {

namespace {

using namespace Vistrel;

cv::Mat matrix(const RawImage& frame, const std::uint8_t* pixels, int type)
{
    // OpenCV has no type for constant pixels.
    return {static_cast<int>(frame.height), static_cast<int>(frame.width), type, const_cast<std::uint8_t*>(pixels)};
}

double scaleTo8(Format format, int channels)
{
    return 1.0 / (1 << (static_cast<int>(formatDepth(format)) / channels - 8));
}

/// Calls `convert(source, target)` for parts of both with the same rows.
template <typename Convert>
void forParts(CopyPool& pool, const cv::Mat& source, const cv::Mat& target, Convert&& convert)
{
    pool.runRows(
        static_cast<std::size_t>(source.rows), source.step[0] + target.step[0],
        [&](std::size_t first, std::size_t end) {
            const cv::Range rows(static_cast<int>(first), static_cast<int>(end));
            convert(source.rowRange(rows), target.rowRange(rows));
        },
        fewestRows);
}

template <typename Convert>
void add(std::vector<Peer>& peers, int sourceType, int targetType, Convert convert)
{
    peers.push_back({"opencv", [=, pool = CopyPool::shared()](const RawImage& frame, std::uint8_t* pixels) {
                         forParts(*pool, matrix(frame, frame.data, sourceType), matrix(frame, pixels, targetType),
                                  convert);
                     }});
}

// OpenCV names a pattern by the sites in the second row, from the second column on: our RG is its BG. Asked for RG
// instead, it exchanges red and blue, and its BGRA is RGBA.
void addMosaic(std::vector<Peer>& peers, Format format)
{
    cv::setNumThreads(static_cast<int>(CopyPool::shared()->participants()));
    if (formatDepth(format) == 8) {
        peers.push_back({"opencv", [](const RawImage& frame, std::uint8_t* target) {
                             cv::cvtColor(matrix(frame, frame.data, CV_8UC1), matrix(frame, target, CV_8UC4),
                                          cv::COLOR_BayerRG2BGRA);
                         }});
        return;
    }
    const auto pool = CopyPool::shared();
    const auto deep = std::make_shared<cv::Mat>(); // recycled
    const double scale = scaleTo8(format, 1);
    peers.push_back({"opencv", [=](const RawImage& frame, std::uint8_t* pixels) {
                         cv::cvtColor(matrix(frame, frame.data, CV_16UC1), *deep, cv::COLOR_BayerRG2BGRA);
                         forParts(*pool, *deep, matrix(frame, pixels, CV_8UC4),
                                  [scale](const cv::Mat& source, const cv::Mat& target) {
                                      source.convertTo(target, CV_8U, scale);
                                  });
                     }});
}

} // namespace

void addOpenCV(std::vector<Peer>& peers, Format format)
{
    switch (format) {
    case Mono8:
        return add(peers, CV_8UC1, CV_8UC1,
                   [](const cv::Mat& source, const cv::Mat& target) { source.copyTo(target); });
    case Mono10:
    case Mono12:
    case Mono14:
    case Mono16:
        return add(peers, CV_16UC1, CV_8UC1,
                   [scale = scaleTo8(format, 1)](const cv::Mat& source, const cv::Mat& target) {
                       source.convertTo(target, CV_8U, scale);
                   });
    case RGB8:
        return add(peers, CV_8UC3, CV_8UC4, [](const cv::Mat& source, const cv::Mat& target) {
            cv::cvtColor(source, target, cv::COLOR_BGR2RGBA);
        });
    case RGBa8:
        return add(peers, CV_8UC4, CV_8UC4, [](const cv::Mat& source, const cv::Mat& target) {
            cv::cvtColor(source, target, cv::COLOR_BGRA2RGBA);
        });
    case RGB12:
    case RGB14:
    case RGB16:
        return add(peers, CV_16UC3, CV_8UC4,
                   [scale = scaleTo8(format, 3)](const cv::Mat& source, const cv::Mat& target) {
                       thread_local cv::Mat reduced; // recycled
                       source.convertTo(reduced, CV_8U, scale);
                       cv::cvtColor(reduced, target, cv::COLOR_BGR2RGBA);
                   });
    case BayerRG8:
    case BayerRG10:
    case BayerRG12:
    case BayerRG14:
    case BayerRG16:
        return addMosaic(peers, format);
    default:
        return;
    }
}

} // namespace Bench
