#pragma once

// Plain loops marked WIDE_TOO are compiled for wider registers as well, and the one that fits the machine is
// taken when the program starts. Not under the thread checker, which is not up yet at that moment.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define WIDE_TOO __attribute__((target_clones("avx2", "default")))
#else
#define WIDE_TOO
#endif
/// For what is called inside of such loops: it must become part of every version of them.
#define INLINED __attribute__((always_inline)) inline
