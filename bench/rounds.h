// SPDX-License-Identifier: Apache-2.0
// Comparing two ways on a machine that does other things too: both run in every round, in turn
// first, and the figure is the median of the rounds' ratios. Times are the thread's own processor
// time.
#pragma once

#include <benchmark/benchmark.h>

#include <ctime>
#include <utility>
#include <vector>

#include "median.h"

namespace pwrmgt::bench {

inline double thread_seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// One side of a comparison: what is timed, and how many operations that is.
template <class Body>
struct Side {
    Body body;
    int operations = 1;

    double seconds_each() const {
        const double start = thread_seconds();
        for (int i = 0; i < operations; ++i) {
            body();
        }
        return (thread_seconds() - start) / operations;
    }
};
template <class Body>
Side(Body, int) -> Side<Body>;

// Runs the rounds that the benchmark asks for, `between` after each, untimed. Leaves the counters
// ratio, subject_us and baseline_us.
template <class Subject, class Baseline, class Between>
void compare(benchmark::State& state, const Side<Subject>& subject, const Side<Baseline>& baseline,
             Between between) {
    std::vector<double> ratios;
    std::vector<double> of_subject;
    std::vector<double> of_baseline;
    bool subject_first = true;
    for (auto round : state) {
        static_cast<void>(round);
        double one = subject_first ? subject.seconds_each() : 0;
        const double other = baseline.seconds_each();
        if (!subject_first) one = subject.seconds_each();
        subject_first = !subject_first;
        ratios.push_back(one / other);
        of_subject.push_back(one * 1e6);
        of_baseline.push_back(other * 1e6);
        state.SetIterationTime(one);
        between();
    }
    state.counters["ratio"] = median(std::move(ratios));
    state.counters["subject_us"] = median(std::move(of_subject));
    state.counters["baseline_us"] = median(std::move(of_baseline));
}

template <class Subject, class Baseline>
void compare(benchmark::State& state, const Side<Subject>& subject,
             const Side<Baseline>& baseline) {
    compare(state, subject, baseline, [] {});
}

}  // namespace pwrmgt::bench
