// SPDX-License-Identifier: MIT
// Times calls by turns, and reports the results.
#include "Turns.h"

#include <algorithm>
#include <random>

namespace Bench {

namespace {

constexpr int warmUps = 3;

double fastest(const std::vector<const Contender*>& peers, double fraction)
{
    std::vector<double> times;
    for (const Contender* const peer : peers)
        times.push_back(quantile(peer->elapsed, fraction));
    return *std::min_element(times.begin(), times.end());
}

} // namespace

bool runByTurns(benchmark::State& state, std::vector<Contender>& contenders)
{
    bool isGood = true;
    for (int i = 0; i < warmUps; ++i) {
        for (const Contender& contender : contenders)
            isGood = contender.call() && isGood;
    }
    std::vector<Contender*> order;
    for (Contender& contender : contenders)
        order.push_back(&contender);
    std::mt19937 random;
    while (state.KeepRunning()) {
        std::shuffle(order.begin(), order.end(), random);
        for (Contender* const contender : order) {
            const double cpu = processCpuMilliseconds();
            const auto start = Clock::now();
            isGood = contender->call() && isGood;
            contender->elapsed.push_back(millisecondsSince(start));
            contender->cpu.push_back(processCpuMilliseconds() - cpu);
        }
        state.SetIterationTime(1e-3 * contenders.front().elapsed.back());
    }
    if (!isGood)
        state.SkipWithError("a call failed");
    return isGood;
}

void reportTimes(benchmark::State& state, const Contender& ours, const std::vector<const Contender*>& others)
{
    state.counters["median_ms"] = quantile(ours.elapsed, 0.5);
    state.counters["cpu_ms"] = quantile(ours.cpu, 0.5);
    for (const Contender* const other : others) {
        state.counters[other->name + "_ms"] = quantile(other->elapsed, 0.5);
        state.counters[other->name + "_cpu_ms"] = quantile(other->cpu, 0.5);
    }
}

void reportTimesFaster(benchmark::State& state, const Contender& ours, const std::vector<const Contender*>& peers)
{
    if (peers.empty())
        return;
    state.counters["times_faster"] = fastest(peers, 0.5) / quantile(ours.elapsed, 0.5);
    state.counters["times_faster_p10"] = fastest(peers, 0.1) / quantile(ours.elapsed, 0.1);
}

} // namespace Bench
