// A durable change of one preference beside the system calls that it cannot do without.

#include "BenchDevice.h"
#include "PairedRuns.h"
#include "corefoundation/CFPreferences.h"

#include <array>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge::bench {

namespace {

constexpr const char* kDomain = "com.example.bench";

/// A domain of as many keys as the system has.
void FillDomain() {
    for (int key = 0; key < 46; ++key)
        CFPreferencesSetAppValue("settingNumber" + std::to_string(key),
                                 PropertyList::floatNumber(static_cast<float>(key)), kDomain);
    Demand(CFPreferencesAppSynchronize(kDomain), "the domain could not be written");
}

void SetOne(float value) {
    CFPreferencesSetAppValue("settingNumber7", PropertyList::floatNumber(value), kDomain);
    Demand(CFPreferencesAppSynchronize(kDomain), "a preference could not be set");
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

} // namespace

} // namespace tallyforge::bench

int main(int count, char** words) {
    using namespace tallyforge::bench;
    const tallyforge::PairedRuns runs(count, words,
                                      "A durable change of one preference and the bare calls of it.",
                                      tallyforge::PairedRuns::Clock::wall);
    const BenchDevice device;
    FillDomain();
    const std::string folder = device.root() + "/var/mobile/Library/Preferences";
    std::filesystem::copy_file(folder + "/com.example.bench.plist", folder + "/bare.plist");
    float value = 0;
    runs.measure(
        "durable-set", [&] { SetOne(value += 1); }, [&] { Demand(BareCalls(folder), "a bare call failed"); });
    return 0;
}
