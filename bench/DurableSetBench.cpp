// What a durable change of one preference costs beside the system calls that it cannot do without. The two
// are run in turns, so that a disk that is slow for a while is slow for both; the aim is 1.15 times at most.

#include "corefoundation/CFPreferences.h"
#include "foundation/DeviceRoot.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tallyforge {

namespace {

constexpr const char* domain = "com.example.bench";

/// A device root on the disk that TMPDIR names, with a domain of as many keys as the system has.
class Device {
  public:
    Device() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-bench-XXXXXX").string();
        if (!mkdtemp(pattern.data()) || !DeviceRoot::set(pattern)) std::abort();
        root_ = pattern;
        for (int key = 0; key < 46; ++key)
            CFPreferencesSetAppValue("settingNumber" + std::to_string(key),
                                     PropertyList::floatNumber(static_cast<float>(key)), domain);
        if (!CFPreferencesAppSynchronize(domain)) std::abort();
    }
    ~Device() { std::filesystem::remove_all(root_); }

    std::string folder() const { return root_ + "/var/mobile/Library/Preferences"; }

  private:
    std::string root_;
};

bool SetOne(float value) {
    CFPreferencesSetAppValue("settingNumber7", PropertyList::floatNumber(value), domain);
    return CFPreferencesAppSynchronize(domain);
}

/// The same change as bare calls, on a file of the same size in the same folder.
bool BareCalls(const std::string& folder) {
    const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    bool good = opened >= 0 && flock(opened, LOCK_EX) == 0;
    std::array<char, 8192> bytes{};
    const int old = openat(opened, "bare.plist", O_RDONLY | O_CLOEXEC);
    struct stat status {};
    good = good && fstat(old, &status) == 0;
    const ssize_t size = read(old, bytes.data(), bytes.size());
    close(old);
    const int made = openat(opened, ".bare.new", O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    good = good && size > 0 && write(made, bytes.data(), static_cast<size_t>(size)) == size;
    good = good && fsync(made) == 0;
    close(made);
    good = good && renameat(opened, ".bare.new", opened, "bare.plist") == 0;
    good = good && fsync(opened) == 0;
    close(opened);
    return good;
}

template <class Work>
double MicrosecondsOf(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    if (!work()) std::abort();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void DurableSetBesideBareCalls(benchmark::State& state) {
    const Device device;
    const std::string folder = device.folder();
    std::filesystem::copy_file(folder + "/com.example.bench.plist", folder + "/bare.plist");
    std::vector<double> sets;
    std::vector<double> bare;
    float value = 0;
    for (auto _ : state) {
        const bool setFirst = (sets.size() & 1) == 0;
        if (!setFirst) bare.push_back(MicrosecondsOf([&] { return BareCalls(folder); }));
        sets.push_back(MicrosecondsOf([&] { return SetOne(value += 1); }));
        if (setFirst) bare.push_back(MicrosecondsOf([&] { return BareCalls(folder); }));
    }
    state.counters["set_us"] = Median(sets);
    state.counters["bare_us"] = Median(bare);
    state.counters["ratio"] = Median(sets) / Median(bare);
}
BENCHMARK(DurableSetBesideBareCalls)->Iterations(400)->Repetitions(5)->Unit(benchmark::kMicrosecond);

/// Reading the whole domain when nothing has changed: what every refresh of the settings costs.
void ReadWholeDomain(benchmark::State& state) {
    const Device device;
    for (auto _ : state) {
        const auto keys = CFPreferencesCopyKeyList(domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
        if (!keys || keys->size() != 46) std::abort();
        benchmark::DoNotOptimize(
            CFPreferencesCopyMultiple(*keys, domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    }
}
BENCHMARK(ReadWholeDomain)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace tallyforge

BENCHMARK_MAIN();
