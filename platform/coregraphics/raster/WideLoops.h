#pragma once

// Plain loops marked WIDE_TOO are compiled for wider registers as well, and the one that fits the machine is
// taken when the program starts. Not under the thread checker, which is not up yet at that moment.
#if defined(__x86_64__) && !THREAD_SANITIZER
#define WIDE_TOO __attribute__((target_clones("avx2", "default")))
#else
#define WIDE_TOO
#endif
#if defined(__x86_64__)
/// Written for registers of 32 bytes: to be called only where WideRegisters() says so.
#define WIDE __attribute__((target("avx2")))
#define WIDE_INLINED __attribute__((target("avx2"), always_inline)) inline
#endif
/// For what is called inside of such loops: it must become part of every version of them.
#define INLINED __attribute__((always_inline)) inline

namespace tallyforge {

/// Whether this machine has registers of 32 bytes and what counts in them; for loops written for those.
inline bool WideRegisters() {
#if defined(__x86_64__)
    static const bool known = __builtin_cpu_supports("avx2") != 0;
    return known;
#else
    return false;
#endif
}

} // namespace tallyforge
