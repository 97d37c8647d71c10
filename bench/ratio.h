// Measures candidates against each other in one process and says whether the ratios reach their targets.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <type_traits>

namespace velk::bench {

// Makes the compiler believe that the value is used.
template <class T>
void Keep(const T& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

// Time in ns of one call.
template <class Work>
double TimeOf(Work&& work) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

// Time in ns of `count` calls. A candidate that returns a double has measured itself: not all that it does counts.
template <class Candidate>
double Time(Candidate& candidate, long count) {
    if constexpr (std::is_same_v<decltype(candidate()), double>) {
        double sum = 0;
        for (long i = 0; i < count; ++i) sum += candidate();
        return sum;
    } else {
        return TimeOf([&] {
            for (long i = 0; i < count; ++i) candidate();
        });
    }
}

// How many calls take about a millisecond: long beside the clock's step, short beside what else the machine does.
template <class Candidate>
long CallsPerSample(Candidate& candidate) {
    constexpr double kSample = 1e6;
    candidate();  // what only a first call does
    long count = 1;
    while (Time(candidate, count) < kSample) count *= 2;
    return count;
}

// Median time in ns of one call of each candidate. They take turns, so that a change of the clock rate or a busy
// neighbour hits all of them.
template <std::size_t kRounds = 51, class... Candidates>
std::array<double, sizeof...(Candidates)> MedianTimes(Candidates&&... candidates) {
    const std::array<long, sizeof...(Candidates)> counts = {CallsPerSample(candidates)...};
    std::array<std::array<double, kRounds>, sizeof...(Candidates)> samples;
    for (std::size_t round = 0; round < kRounds; ++round) {
        std::size_t i = 0;
        ((samples[i][round] = Time(candidates, counts[i]) / static_cast<double>(counts[i]), ++i), ...);
    }
    std::array<double, sizeof...(Candidates)> medians;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        std::ranges::nth_element(samples[i], samples[i].begin() + kRounds / 2);
        medians[i] = samples[i][kRounds / 2];
    }
    return medians;
}

// Prints one line. True if the peer takes at least `target` times as long as we do.
inline bool Report(const char* name, double ours, double peer, double target) {
    const bool met = peer / ours >= target;
    std::printf("%-28s ours %10.1f ns  peer %10.1f ns  ratio %7.2f  (target %.2f) %s\n", name, ours, peer, peer / ours,
                target, met ? "ok" : "MISSED");
    std::fflush(stdout);
    return met;
}

template <class Ours, class Peer>
bool Compare(const char* name, double target, Ours&& ours, Peer&& peer) {
    const auto medians = MedianTimes(ours, peer);
    return Report(name, medians[0], medians[1], target);
}

}  // namespace velk::bench
