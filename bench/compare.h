#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace outpost
{

inline double secondsOf(const std::function<void()> &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Measures the program's work and the reference in turn, so that load on the machine affects both.
// `prepare` runs before each and is not measured. The medians, in seconds, become the counters
// "own" and "reference"; the first round is a warm-up and is not counted.
inline void compare(benchmark::State &state, const std::function<void()> &prepare,
                    const std::function<void()> &own, const std::function<void()> &reference)
{
    std::vector<double> ownSeconds;
    std::vector<double> referenceSeconds;
    const auto round = [&] {
        prepare();
        ownSeconds.push_back(secondsOf(own));
        prepare();
        referenceSeconds.push_back(secondsOf(reference));
    };
    round();
    ownSeconds.clear();
    referenceSeconds.clear();
    while (state.KeepRunning()) {
        round();
        state.SetIterationTime(ownSeconds.back());
    }
    state.counters["own"] = median(ownSeconds);
    state.counters["reference"] = median(referenceSeconds);
}

// Runs all registered benchmarks, each for this number of rounds.
inline int roundsAskedFor(int argc, char **argv, int usual)
{
    const auto isSmoke = [](const char *argument) { return std::string(argument) == "--smoke"; };
    return std::any_of(argv, argv + argc, isSmoke) ? 1 : usual;
}

} // namespace outpost
