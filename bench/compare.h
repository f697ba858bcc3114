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

// Times the program's own work and the bare reference in turn, so that a loud machine is loud for
// both. `prepare` comes before each and is not timed. The medians, in seconds, become the counters
// "own" and "reference"; the first round, which only warms up, counts for neither.
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

// Runs what is registered, so many rounds each.
inline int roundsAskedFor(int argc, char **argv, int usual)
{
    const auto isSmoke = [](const char *argument) { return std::string(argument) == "--smoke"; };
    return std::any_of(argv, argv + argc, isSmoke) ? 1 : usual;
}

} // namespace outpost
