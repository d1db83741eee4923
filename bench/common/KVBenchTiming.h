#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <functional>
#include <vector>

// Times one piece of work over several runs.
struct KVTiming
{
    double medianMs = 0;
    double worstMs = 0;
};

inline KVTiming kvTime(int repetitions, const std::function<void()> &work)
{
    std::vector<double> times;
    for (int i = 0; i < repetitions; ++i) {
        QElapsedTimer clock;
        clock.start();
        work();
        times.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times.back()};
}
