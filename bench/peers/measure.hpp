// Times that are compared are taken in turns, so that whatever else the machine does falls on all alike.
#pragma once

#include <vector>

#include "support/cases.hpp"

namespace kuvbench {

enum class Clock {
    processor,  // of all threads of the process: what other processes take does not count
    elapsed
};

struct Plan {
    double sampleSeconds;  // a sample repeats its work until it lasts that long
    double seconds;        // rounds are added until this has passed
    int minimumRounds, maximumRounds;
    int slowRounds;  // enough once ten times those seconds have passed
};

// Runs each once a round, beginning with another each time. Gives the seconds of one repetition, per run and round.
std::vector<std::vector<double>> takeTurns(const std::vector<Run>& runs, Clock clock, const Plan& plan);

// The middle value of many, and the range of their middle half.
struct Spread {
    double low, median, high;
};
Spread spreadOf(std::vector<double> values);

}  // namespace kuvbench
