// What the address and leak checkers must know of the libraries that drawing brings along. Empty in any other
// build.
#include "rastergraphics/LeakChecker.h"

#if ADDRESS_SANITIZER
extern "C" {
const char* __lsan_default_suppressions();
const char* __lsan_default_options();
const char* __asan_default_options();

// What libraries keep until the program's end behind pointers that the checker cannot follow: the font
// library what it has read of fonts, the bus library its errors' texts, the toolkit its keyboard.
const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\nleak:libdbus-1.so\nleak:QInputDevice::\n";
}
const char* __lsan_default_options() {
    return "print_suppressions=0";
}
// The checker misreads where image plug-ins, loaded late, keep their thread-local data, and crashes.
const char* __asan_default_options() {
    return "intercept_tls_get_addr=0";
}
}
#endif

namespace tallyforge {

void PrepareLeakChecker() {}

} // namespace tallyforge
