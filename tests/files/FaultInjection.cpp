#include "FaultInjection.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

struct Fault {
    std::string call;
    int nth;
    int number;
};

struct State {
    bool active = false;
    std::vector<Fault> faults;
    std::vector<std::string> calls;
    size_t longestWrite = 0;
    bool interrupted = false;
};

State& TheState() {
    static State state;
    return state;
}

/// Notes the call; true, with errno set, when it is to fail.
bool Fails(const std::string& call, const std::string& detail = {}) {
    auto& state = TheState();
    if (!state.active) return false;
    state.calls.push_back(detail.empty() ? call : call + " " + detail);
    const auto isCall = [&](const std::string& noted) {
        return noted == call || noted.starts_with(call + " ");
    };
    const auto count = std::count_if(state.calls.begin(), state.calls.end(), isCall);
    for (const auto& fault : state.faults) {
        if (fault.call != call || (fault.nth != 0 && fault.nth != count)) continue;
        errno = fault.number;
        return true;
    }
    return false;
}

} // namespace

extern "C" {
long __real_syscall(long number, long a, long b, long c, long d, long e, long f);
ssize_t __real_write(int file, const void* bytes, size_t count);
int __real_fsync(int file);
int __real_renameat(int fromFolder, const char* from, int toFolder, const char* to);
int __real_linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags);
int __real_fchmod(int file, mode_t mode);

long __wrap_syscall(long number, long a, long b, long c, long d, long e, long f) {
    if (number == SYS_openat2 && Fails("openat2")) return -1;
    return __real_syscall(number, a, b, c, d, e, f);
}

ssize_t __wrap_write(int file, const void* bytes, size_t count) {
    auto& state = TheState();
    if (state.active && state.longestWrite > 0) {
        state.interrupted = !state.interrupted;
        if (state.interrupted) {
            errno = EINTR;
            return -1;
        }
        count = std::min(count, state.longestWrite);
    }
    return Fails("write") ? -1 : __real_write(file, bytes, count);
}

int __wrap_fsync(int file) {
    return Fails("fsync") ? -1 : __real_fsync(file);
}

int __wrap_renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    return Fails("renameat", std::string(from) + " " + to) ? -1
                                                           : __real_renameat(fromFolder, from, toFolder, to);
}

int __wrap_linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    return Fails("linkat", std::string(from) + " " + to)
               ? -1
               : __real_linkat(fromFolder, from, toFolder, to, flags);
}

int __wrap_fchmod(int file, mode_t mode) {
    return Fails("fchmod") ? -1 : __real_fchmod(file, mode);
}
}

namespace tallyforge {

Faults::Faults() {
    TheState() = {};
    TheState().active = true;
}

Faults::~Faults() {
    TheState() = {};
}

void Faults::fail(const std::string& call, int nth, int number) {
    TheState().faults.push_back({call, nth, number});
}

void Faults::shortWrites(size_t bytes) {
    TheState().longestWrite = bytes;
}

const std::vector<std::string>& Faults::calls() const {
    return TheState().calls;
}

int Faults::count(const std::string& call) const {
    const auto& calls = TheState().calls;
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& noted) {
        return noted == call || noted.starts_with(call + " ");
    }));
}

} // namespace tallyforge
