// SPDX-License-Identifier: MIT
// The palettes: what colour each of the 256 grey levels is shown in.
#include "pipeline/pixels/ColorTables.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace Vistrel {

namespace {

constexpr int levels = 256;
constexpr double pi = 3.141592653589793;

constexpr unsigned int color(unsigned int red, unsigned int green, unsigned int blue)
{
    return 0xFF000000u | red << 16 | green << 8 | blue;
}

constexpr unsigned int gray(unsigned int level)
{
    return color(level, level, level);
}

// One period ends a level before the last, which begins the next one.
unsigned int wave(double value)
{
    return gray(static_cast<unsigned int>(value * 127 + 128));
}

unsigned int channel(double value)
{
    // NaN gives 0.
    return value > 0 ? static_cast<unsigned int>(std::min(value, 255.0)) : 0;
}

template <typename Entry>
QVector<unsigned int> fill(Entry&& entry)
{
    QVector<unsigned int> table(levels);
    for (int i = 0; i < levels; ++i)
        table[i] = entry(static_cast<unsigned int>(i));
    return table;
}

} // namespace

QVector<unsigned int> grayRamp()
{
    return fill(gray);
}

QVector<unsigned int> makeColorTable(ColorTable table, const RainbowParameters& rainbow, std::uint32_t seed)
{
    switch (table) {
    case ColorTable::Gray:
        return grayRamp();
    case ColorTable::Gray2x:
        return fill([](unsigned int i) { return gray(std::min(2 * i, 255u)); });
    case ColorTable::GrayInverse:
        return fill([](unsigned int i) { return gray(255 - i); });
    case ColorTable::Sine:
        return fill([](unsigned int i) { return wave(std::sin(i * pi / 127)); });
    case ColorTable::Cosine:
        return fill([](unsigned int i) { return wave(std::cos(i * pi / 127)); });
    case ColorTable::Contours:
        return fill([](unsigned int i) { return color(i, 8 * (i % 32), 2 * (i % 128)); });
    case ColorTable::Rainbow:
        return fill([&](unsigned int i) {
            const double angle = i * (2 * pi / rainbow.period);
            const auto sine = [&](double phase) {
                return channel(std::sin(angle + phase) * rainbow.amplitude + rainbow.center);
            };
            return color(sine(rainbow.redPhase), sine(rainbow.greenPhase), sine(rainbow.bluePhase));
        });
    case ColorTable::Random: {
        std::mt19937 random(seed);
        return fill([&](unsigned int) {
            const auto blue = static_cast<unsigned int>(random() & 0xFF);
            const auto green = static_cast<unsigned int>(random() & 0xFF);
            const auto red = static_cast<unsigned int>(random() & 0xFF);
            return color(red, green, blue);
        });
    }
    }
    return {};
}

} // namespace Vistrel
