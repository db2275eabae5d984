#include "PairedRuns.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace tallyforge {

namespace {

/// Of each side in a pair, which is cut into slices that take turns, so that what else happens on the machine
/// meets both.
constexpr int kSlices = 8;
constexpr double kSliceSeconds = 0.005;
constexpr int kMostPairs = 10000;

using Clock = PairedRuns::Clock;

double secondsOn(Clock clock) {
    timespec now{};
    clock_gettime(clock == Clock::processor ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

double secondsOfSome(const std::function<void()>& operation, int count, Clock clock) {
    double from = secondsOn(clock);
    for (int i = 0; i < count; ++i)
        operation();
    return secondsOn(clock) - from;
}

/// How often the operation is done in a slice. What is done for the first time is warm afterwards.
int countForASlice(const std::function<void()>& operation, Clock clock) {
    operation();
    for (int count = 1;; count *= 2) {
        double seconds = secondsOfSome(operation, count, clock);
        if (seconds >= kSliceSeconds / 4) return std::max(1, int(count * kSliceSeconds / seconds));
    }
}

void print(std::string_view item, double ours, double peer) {
    std::printf("%.*s\t%.9g\t%.9g\n", int(item.size()), item.data(), ours, peer);
    std::fflush(stdout);
}

} // namespace

PairedRuns::PairedRuns(int argc, char** argv, std::string_view what, Clock clock) : clock_(clock) {
    for (int i = 1; i < argc; ++i) {
        std::string_view word = argv[i];
        if (word == "--help") {
            std::printf("%.*s\nUsage: [--pairs N]   (9 unless given)\n", int(what.size()), what.data());
            std::exit(0);
        }
        std::string_view number = word == "--pairs" && i + 1 < argc ? argv[++i] : "";
        auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), pairs_);
        if (error != std::errc() || end != number.data() + number.size() || pairs_ < 1 ||
            pairs_ > kMostPairs) {
            std::fprintf(stderr, "tallyforge: %s: the only words are --pairs and a number from 1 to %d\n",
                         argv[0], kMostPairs);
            std::exit(2);
        }
    }
}

void PairedRuns::measure(std::string_view item, const std::function<void()>& ours,
                         const std::function<void()>& peer) const {
    const int ourCount = countForASlice(ours, clock_);
    const int peerCount = countForASlice(peer, clock_);
    for (int pair = 0; pair < pairs_; ++pair) {
        double ourSeconds = 0, peerSeconds = 0;
        for (int slice = 0; slice < kSlices; ++slice) {
            const bool oursFirst = (pair + slice) % 2 == 0;
            if (oursFirst) ourSeconds += secondsOfSome(ours, ourCount, clock_);
            peerSeconds += secondsOfSome(peer, peerCount, clock_);
            if (!oursFirst) ourSeconds += secondsOfSome(ours, ourCount, clock_);
        }
        print(item, ourSeconds / kSlices / ourCount, peerSeconds / kSlices / peerCount);
    }
}

void PairedRuns::measureBatches(std::string_view item, int operations, const std::function<void()>& ours,
                                const std::function<void()>& peer) const {
    ours();
    peer();
    for (int pair = 0; pair < pairs_; ++pair) {
        double ourSeconds = 0;
        if (pair % 2 == 0) ourSeconds = secondsOfSome(ours, 1, clock_);
        const double peerSeconds = secondsOfSome(peer, 1, clock_);
        if (pair % 2 != 0) ourSeconds = secondsOfSome(ours, 1, clock_);
        print(item, ourSeconds / operations, peerSeconds / operations);
    }
}

void PairedRuns::remark(std::string_view item, const std::string& remark) {
    std::printf("# %.*s\t%s\n", int(item.size()), item.data(), remark.c_str());
}

std::string PairedRuns::figure(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

double PairedRuns::secondsOf(const std::function<void()>& operation) {
    const int count = countForASlice(operation, Clock::processor);
    double least = secondsOfSome(operation, count, Clock::processor);
    for (int slice = 1; slice < kSlices; ++slice)
        least = std::min(least, secondsOfSome(operation, count, Clock::processor));
    return least / count;
}

} // namespace tallyforge
