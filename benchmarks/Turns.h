// SPDX-License-Identifier: MIT
// Calls that are timed by turns, and what is reported of them.
#pragma once

#include "Measure.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace Bench {

/// One of the calls that are timed by turns. False means that it failed.
struct Contender
{
    std::string name;
    std::function<bool()> call;
    std::vector<double> elapsed; // milliseconds of each call
    std::vector<double> cpu;     // of all threads together
};

/// Runs each contender once an iteration, each time in another order, so that whatever else the machine does, and
/// whatever one call leaves behind for the next, meets all. The first is ours: the iteration's time is its own. False,
/// and the case ended with an error, when a call failed.
bool runByTurns(benchmark::State& state, std::vector<Contender>& contenders);

/// `median_ms` and `cpu_ms` of ours, `<name>_ms` and `<name>_cpu_ms` of the others.
void reportTimes(benchmark::State& state, const Contender& ours, const std::vector<const Contender*>& others);

/// `times_faster`: the time of the fastest peer divided by ours. Nothing without peers.
void reportTimesFaster(benchmark::State& state, const Contender& ours, const std::vector<const Contender*>& peers);

} // namespace Bench
