// SPDX-License-Identifier: MIT
// Times calls by turns, and reports the results.
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

/// Runs each contender once an iteration, each time in another order, so that other load of the machine, and the effect
/// of one call on the next, is the same for all. The first is ours; its time is the iteration's. When a call fails,
/// ends the case with an error and returns false.
bool runByTurns(benchmark::State& state, std::vector<Contender>& contenders);

/// `median_ms` and `cpu_ms` of ours, `<name>_ms` and `<name>_cpu_ms` of the others.
void reportTimes(benchmark::State& state, const Contender& ours, const std::vector<const Contender*>& others);

/// `times_faster`: the time of the fastest peer divided by ours. Nothing without peers.
void reportTimesFaster(benchmark::State& state, const Contender& ours, const std::vector<const Contender*>& peers);

} // namespace Bench
