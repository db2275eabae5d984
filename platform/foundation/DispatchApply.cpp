#include "foundation/DispatchApply.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace tallyforge {

namespace {

constexpr size_t kPortion = 64; // what is taken at once; fewer are not worth a thread
constexpr size_t kMostThreads = 4;

} // namespace

void dispatch_apply(size_t count, const std::function<void(size_t)>& work) {
    std::atomic<size_t> taken = 0;
    const auto takePortions = [&] {
        for (size_t i = taken.fetch_add(kPortion); i < count; i = taken.fetch_add(kPortion)) {
            const size_t end = std::min(count, i + kPortion);
            for (size_t each = i; each < end; ++each)
                work(each);
        }
    };
    const size_t portions = (count + kPortion - 1) / kPortion;
    const size_t threads = std::min({portions, kMostThreads, size_t{std::thread::hardware_concurrency()}});
    std::vector<std::jthread> others; // joined at the end
    try {
        while (others.size() + 1 < threads)
            others.emplace_back(takePortions);
    } catch (const std::system_error&) {
        // Where no thread is to be had, this one does it all.
    }
    takePortions();
}

} // namespace tallyforge
