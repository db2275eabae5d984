// Loaded into a program before all other libraries, this counts the system calls by which it deals with files
// of one folder, and at one of them ends the program or lets the call fail. Only libc is needed.
//
//   FAULT_SCOPE    the folders, separated by ":", whose files count (their paths, or descriptors of them)
//   FAULT_PROGRAM  the last part of the program's own path; in others nothing is done
//   FAULT_LOG      a file; each call that counts adds a line "NAME PATH" to it
//   FAULT_AT       the number of the call (from 1) at which something is done
//
//   FAULT_DO       what: "kill-before", "kill-after", "short" (the call reads or writes a part),
//                  or the number of an error; a "+" after it lets all later calls fail too
//
//   FAULT_HISTORY  a folder that gets a copy of each file that was renamed,
//                  as "COUNT" (bytes) and "COUNT.name"
//
//   FAULT_STRICT   set: a call that changes files and went around this library
//                  ends the program by SIGSYS

#include <algorithm>
#include <bit>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/openat2.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

// Stands where the kernel takes no argument, and so tells a call of this library from others.
constexpr long kMark = 0x5EED5EED;
constexpr int kLogDescriptor = 900; // out of the way of the program's own

struct Faults {
    bool active = false;
    const char* scope = nullptr;
    const char* history = nullptr;
    int log = -1;
    long at = 0;
    long count = 0;
    long renamed = 0;
    bool killBefore = false;
    bool killAfter = false;
    bool shortened = false;
    bool lasting = false;
    int error = 0;
};

Faults& State() {
    static Faults state;
    return state;
}

using SystemCall = long (*)(long, ...);

/// libc's `syscall`, not the one below.
SystemCall RealSystemCall() {
    static const auto real = reinterpret_cast<SystemCall>(dlsym(RTLD_NEXT, "syscall"));
    return real;
}

long Call(long number, long a = 0, long b = 0, long c = 0, long d = 0, long e = 0) {
    return RealSystemCall()(number, a, b, c, d, e, kMark);
}

template <class T>
long Word(T* pointer) {
    return reinterpret_cast<long>(pointer);
}

/// What a call is about, as far as it is known: a path of this machine.
struct Subject {
    char path[PATH_MAX + 64] = "";
};

Subject OfDescriptor(int descriptor) {
    char link[64];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    Subject subject;
    const int kept = errno;
    const long length = Call(SYS_readlinkat, AT_FDCWD, Word(link), Word(subject.path), PATH_MAX);
    errno = kept;
    subject.path[length > 0 ? length : 0] = '\0';
    return subject;
}

Subject OfPath(int folder, const char* path) {
    if (!path) return {};
    if (path[0] == '\0') return OfDescriptor(folder);
    Subject subject;
    if (path[0] == '/') {
        std::snprintf(subject.path, sizeof subject.path, "%s", path);
        return subject;
    }
    if (folder == AT_FDCWD)
        Call(SYS_getcwd, Word(subject.path), PATH_MAX);
    else
        subject = OfDescriptor(folder);
    const size_t length = strlen(subject.path);
    std::snprintf(subject.path + length, sizeof subject.path - length, "/%s", path);
    return subject;
}

/// Of a path that the kernel resolves below the folder, "/" included.
Subject BelowFolder(int folder, const char* path) {
    Subject subject = OfDescriptor(folder);
    const size_t length = strlen(subject.path);
    std::snprintf(subject.path + length, sizeof subject.path - length, "/%s", path);
    return subject;
}

bool InScope(const char* path) {
    for (const char* folder = State().scope; folder && *folder;) {
        const char* end = strchrnul(folder, ':');
        const auto length = static_cast<size_t>(end - folder);
        if (strncmp(path, folder, length) == 0 && (path[length] == '/' || path[length] == '\0')) return true;
        folder = *end ? end + 1 : end;
    }
    return false;
}

[[noreturn]] void Die() {
    for (;;)
        Call(SYS_kill, getpid(), SIGKILL);
}

bool NeedsSpace(const char* name, bool creates) {
    for (const char* each : {"write", "pwrite", "writev", "fsync", "fdatasync", "syncfs", "mkdirat", "linkat",
                             "renameat", "symlinkat", "ftruncate", "close"})
        if (strcmp(each, name) == 0) return true;
    return creates;
}

void Note(const char* name, const char* path) {
    if (State().log < 0) return;
    char line[PATH_MAX + 128];
    const int length = std::snprintf(line, sizeof line, "%s %s\n", name, path);
    Call(SYS_write, State().log, Word(line), std::min<long>(length, sizeof line - 1));
}

enum class Turn { none, fails, shortened, killedAfter };

/// Counts the call; what is to become of it.
Turn Next(const char* name, const Subject& subject, bool creates = false) {
    Faults& state = State();
    if (!state.active || !InScope(subject.path)) return Turn::none;
    Note(name, subject.path);
    ++state.count;
    if (state.lasting && state.at > 0 && state.count > state.at && state.error != 0 &&
        (state.error != ENOSPC || NeedsSpace(name, creates)))
        return Turn::fails;
    if (state.count != state.at) return Turn::none;
    if (state.killBefore) Die();
    if (state.killAfter) return Turn::killedAfter;
    if (state.shortened) return Turn::shortened;
    return state.error != 0 ? Turn::fails : Turn::none;
}

long Failed() {
    errno = State().error;
    return -1;
}

template <class Act>
long Do(const char* name, const Subject& subject, Act act, bool creates = false) {
    const Turn turn = Next(name, subject, creates);
    if (turn == Turn::fails) return Failed();
    const long result = act();
    if (turn == Turn::killedAfter) Die();
    return result;
}

template <class Act>
long Transfer(const char* name, int descriptor, size_t count, Act act) {
    const Turn turn = Next(name, OfDescriptor(descriptor));
    if (turn == Turn::fails) return Failed();
    const long result = act(turn == Turn::shortened && count > 1 ? count / 2 : count);
    if (turn == Turn::killedAfter) Die();
    return result;
}

/// Copies the file that was just put in its place.
void Remember(int folder, const char* name) {
    Faults& state = State();
    const Subject subject = OfPath(folder, name);
    if (!state.history || !state.active || !InScope(subject.path)) return;
    char to[PATH_MAX];
    std::snprintf(to, sizeof to, "%s/%ld.name", state.history, ++state.renamed);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    const long told = Call(SYS_openat, AT_FDCWD, Word(to), kFlags, 0644);
    Call(SYS_write, told, Word(subject.path), static_cast<long>(strlen(subject.path)));
    Call(SYS_close, told);
    std::snprintf(to, sizeof to, "%s/%ld", state.history, state.renamed);
    const long copy = Call(SYS_openat, AT_FDCWD, Word(to), kFlags, 0644);
    const long file = Call(SYS_openat, AT_FDCWD, Word(subject.path), O_RDONLY);
    char bytes[65536];
    for (long got = 0; (got = Call(SYS_read, file, Word(bytes), sizeof bytes)) > 0;)
        Call(SYS_write, copy, Word(bytes), got);
    Call(SYS_close, file);
    Call(SYS_close, copy);
}

/// Calls that change files and do not bear the mark are trapped. Standard output and error are not files
/// here.
void TrapWhatGoesAround() {
    constexpr auto kArgument = static_cast<unsigned>(offsetof(seccomp_data, args));
    constexpr unsigned kMarkAt = kArgument + 5 * 8;
    constexpr long kChanging[] = {
        SYS_pwrite64, SYS_writev,    SYS_pwritev,   SYS_pwritev2,        SYS_fsync,     SYS_fdatasync,
        SYS_syncfs,   SYS_renameat,  SYS_renameat2, SYS_linkat,          SYS_symlinkat, SYS_unlinkat,
        SYS_mkdirat,  SYS_fchmod,    SYS_fchmodat,  SYS_fchown,          SYS_fchownat,  SYS_ftruncate,
        SYS_truncate, SYS_fallocate, SYS_flock,     SYS_copy_file_range, SYS_sendfile,  SYS_openat2,
#ifdef SYS_rename
        SYS_rename,   SYS_link,      SYS_symlink,   SYS_unlink,          SYS_rmdir,     SYS_mkdir,
        SYS_chmod,    SYS_chown,     SYS_lchown,    SYS_creat,
#endif
    };
    constexpr size_t kCalls = sizeof kChanging / sizeof *kChanging;
    sock_filter program[2 * kCalls + 32];
    unsigned short length = 0;
    const auto add = [&](sock_filter step) { program[length++] = step; };
    const auto load = [&](unsigned from) { add(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, from)); };
    const auto allow = [&] { add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)); };
    const auto trap = [&] { add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP)); };
    load(kMarkAt);
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(kMark), 0, 1));
    allow();
    load(offsetof(seccomp_data, nr));
    for (const long number : kChanging) {
        add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(number), 0, 1));
        trap();
    }
    // Writing to what is neither standard output nor standard error.
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_write, 0, 5));
    load(kArgument);
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 1, 2, 0));
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 2, 1, 0));
    trap();
    allow();
    // Opening for writing.
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3));
    load(kArgument + 2 * 8);
    add(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, O_WRONLY | O_RDWR | O_CREAT, 0, 1));
    trap();
    allow();
    const sock_fprog filter{length, program};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        std::perror("fault library: calls cannot be trapped");
        _exit(70);
    }
}

long Number(const char* text) {
    return text ? std::strtol(text, nullptr, 10) : 0;
}

__attribute__((constructor)) void Prepare() {
    Faults& state = State();
    state.scope = std::getenv("FAULT_SCOPE");
    const char* program = std::getenv("FAULT_PROGRAM");
    char self[PATH_MAX] = "";
    Call(SYS_readlinkat, AT_FDCWD, Word("/proc/self/exe"), Word(self), PATH_MAX - 1);
    const char* slash = std::strrchr(self, '/');
    if (!state.scope || !program || !slash || strcmp(slash + 1, program) != 0) return;
    state.history = std::getenv("FAULT_HISTORY");
    if (const char* log = std::getenv("FAULT_LOG")) {
        const long opened = Call(SYS_openat, AT_FDCWD, Word(log), O_WRONLY | O_CREAT | O_APPEND, 0644);
        state.log = static_cast<int>(Call(SYS_fcntl, opened, F_DUPFD_CLOEXEC, kLogDescriptor));
        Call(SYS_close, opened);
    }
    state.at = Number(std::getenv("FAULT_AT"));
    if (const char* act = std::getenv("FAULT_DO")) {
        state.killBefore = strcmp(act, "kill-before") == 0;
        state.killAfter = strcmp(act, "kill-after") == 0;
        state.shortened = strcmp(act, "short") == 0;
        state.error = static_cast<int>(Number(act));
        state.lasting = std::strchr(act, '+') != nullptr;
    }
    if (std::getenv("FAULT_STRICT")) TrapWhatGoesAround();
    state.active = true;
}

int Open(int folder, const char* path, int flags, unsigned mode) {
    return static_cast<int>(Do(
        "openat", OfPath(folder, path), [&] { return Call(SYS_openat, folder, Word(path), flags, mode); },
        (flags & O_CREAT) != 0));
}

template <class Function>
Function Real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// The mode that open takes after its flags, where it takes one.
#define MODE_AFTER(flags)                                                                                    \
    unsigned mode = 0;                                                                                       \
    if ((flags) & (O_CREAT | O_TMPFILE)) {                                                                   \
        va_list more;                                                                                        \
        va_start(more, flags);                                                                               \
        mode = va_arg(more, unsigned);                                                                       \
        va_end(more);                                                                                        \
    }

} // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    MODE_AFTER(flags)
    return Open(AT_FDCWD, path, flags, mode);
}
int open64(const char* path, int flags, ...) {
    MODE_AFTER(flags)
    return Open(AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    MODE_AFTER(flags)
    return Open(folder, path, flags, mode);
}
int openat64(int folder, const char* path, int flags, ...) {
    MODE_AFTER(flags)
    return Open(folder, path, flags, mode);
}
int creat(const char* path, mode_t mode) {
    return Open(AT_FDCWD, path, O_WRONLY | O_CREAT | O_TRUNC, mode);
}
int creat64(const char* path, mode_t mode) {
    return Open(AT_FDCWD, path, O_WRONLY | O_CREAT | O_TRUNC, mode);
}

long syscall(long number, ...) {
    va_list more;
    va_start(more, number);
    const long a = va_arg(more, long), b = va_arg(more, long), c = va_arg(more, long), d = va_arg(more, long),
               e = va_arg(more, long), f = va_arg(more, long);
    va_end(more);
    if (number != SYS_openat2) return RealSystemCall()(number, a, b, c, d, e, f);
    const auto* path = std::bit_cast<const char*>(b);
    const auto* how = std::bit_cast<const open_how*>(c);
    const auto folder = static_cast<int>(a);
    return Do(
        "openat2", how->resolve & RESOLVE_IN_ROOT ? BelowFolder(folder, path) : OfPath(folder, path),
        [&] {
            // The kernel gives up on ".." when any folder of this machine is moved meanwhile, by whomever.
            // The program asks again then; here that is one call, so that each run counts alike.
            constexpr int kMostTries = 1'000;
            for (int tries = 1;; ++tries) {
                const long opened = Call(number, a, b, c, d);
                if (opened >= 0 || errno != EAGAIN || tries == kMostTries) return opened;
            }
        },
        (how->flags & O_CREAT) != 0);
}

ssize_t read(int file, void* bytes, size_t count) {
    return Transfer("read", file, count,
                    [&](size_t part) { return Call(SYS_read, file, Word(bytes), static_cast<long>(part)); });
}
ssize_t pread(int file, void* bytes, size_t count, off_t at) {
    return Transfer("pread", file, count, [&](size_t part) {
        return Call(SYS_pread64, file, Word(bytes), static_cast<long>(part), at);
    });
}
ssize_t pread64(int file, void* bytes, size_t count, off64_t at) {
    return pread(file, bytes, count, at);
}
ssize_t readv(int file, const iovec* parts, int count) {
    return Do("readv", OfDescriptor(file), [&] { return Call(SYS_readv, file, Word(parts), count); });
}
ssize_t write(int file, const void* bytes, size_t count) {
    return Transfer("write", file, count,
                    [&](size_t part) { return Call(SYS_write, file, Word(bytes), static_cast<long>(part)); });
}
ssize_t pwrite(int file, const void* bytes, size_t count, off_t at) {
    return Transfer("pwrite", file, count, [&](size_t part) {
        return Call(SYS_pwrite64, file, Word(bytes), static_cast<long>(part), at);
    });
}
ssize_t pwrite64(int file, const void* bytes, size_t count, off64_t at) {
    return pwrite(file, bytes, count, at);
}
ssize_t writev(int file, const iovec* parts, int count) {
    return Do("writev", OfDescriptor(file), [&] { return Call(SYS_writev, file, Word(parts), count); });
}

int close(int file) {
    // The descriptor is gone whatever the call says.
    const Turn turn = Next("close", OfDescriptor(file));
    const long result = Call(SYS_close, file);
    if (turn == Turn::killedAfter) Die();
    return static_cast<int>(turn == Turn::fails ? Failed() : result);
}

#define ON_DESCRIPTOR(name, parameters, ...)                                                                 \
    int name parameters {                                                                                    \
        return static_cast<int>(Do(#name, OfDescriptor(file),                                                \
                                   [&] { return Call(SYS_##name, file __VA_OPT__(, ) __VA_ARGS__); }));      \
    }
ON_DESCRIPTOR(fsync, (int file))
ON_DESCRIPTOR(fdatasync, (int file))
ON_DESCRIPTOR(syncfs, (int file) noexcept)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow" // it is the name of a structure too
ON_DESCRIPTOR(flock, (int file, int how) noexcept, how)
#pragma GCC diagnostic pop
ON_DESCRIPTOR(fchmod, (int file, mode_t mode) noexcept, mode)
ON_DESCRIPTOR(fchown, (int file, uid_t user, gid_t group) noexcept, user, group)
ON_DESCRIPTOR(ftruncate, (int file, off_t size) noexcept, size)
int ftruncate64(int file, off64_t size) noexcept {
    return ftruncate(file, size);
}

int fcntl(int file, int command, ...) {
    va_list more;
    va_start(more, command);
    const long argument = va_arg(more, long);
    va_end(more);
    return static_cast<int>(
        Do("fcntl", OfDescriptor(file), [&] { return Call(SYS_fcntl, file, command, argument); }));
}
int fcntl64(int file, int command, ...) {
    va_list more;
    va_start(more, command);
    const long argument = va_arg(more, long);
    va_end(more);
    return fcntl(file, command, argument);
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
    return static_cast<int>(Do("fstatat", OfPath(folder, path), [&] {
        return Call(SYS_newfstatat, folder, Word(path), Word(status), flags);
    }));
}
int fstatat64(int folder, const char* path, struct stat64* status, int flags) noexcept {
    return fstatat(folder, path, reinterpret_cast<struct stat*>(status), flags);
}
int fstat(int file, struct stat* status) noexcept {
    return static_cast<int>(
        Do("fstat", OfDescriptor(file), [&] { return Call(SYS_fstat, file, Word(status)); }));
}
int fstat64(int file, struct stat64* status) noexcept {
    return fstat(file, reinterpret_cast<struct stat*>(status));
}
int stat(const char* path, struct stat* status) noexcept {
    return fstatat(AT_FDCWD, path, status, 0);
}
int stat64(const char* path, struct stat64* status) noexcept {
    return fstatat64(AT_FDCWD, path, status, 0);
}
int lstat(const char* path, struct stat* status) noexcept {
    return fstatat(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
int lstat64(const char* path, struct stat64* status) noexcept {
    return fstatat64(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
ssize_t readlinkat(int folder, const char* path, char* text, size_t size) noexcept {
    return Do("readlinkat", OfPath(folder, path),
              [&] { return Call(SYS_readlinkat, folder, Word(path), Word(text), static_cast<long>(size)); });
}
ssize_t readlink(const char* path, char* text, size_t size) noexcept {
    return readlinkat(AT_FDCWD, path, text, size);
}
int faccessat(int folder, const char* path, int mode, int flags) noexcept {
    return static_cast<int>(Do("faccessat", OfPath(folder, path),
                               [&] { return Call(SYS_faccessat2, folder, Word(path), mode, flags); }));
}
int access(const char* path, int mode) noexcept {
    return faccessat(AT_FDCWD, path, mode, 0);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    const long result = Do("renameat", OfPath(toFolder, to), [&] {
        const long renamed = Call(SYS_renameat2, fromFolder, Word(from), toFolder, Word(to), flags);
        if (renamed == 0) Remember(toFolder, to);
        return renamed;
    });
    return static_cast<int>(result);
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return renameat2(fromFolder, from, toFolder, to, 0);
}
int rename(const char* from, const char* to) noexcept {
    return renameat2(AT_FDCWD, from, AT_FDCWD, to, 0);
}
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return static_cast<int>(Do("linkat", OfPath(toFolder, to), [&] {
        return Call(SYS_linkat, fromFolder, Word(from), toFolder, Word(to), flags);
    }));
}
int link(const char* from, const char* to) noexcept {
    return linkat(AT_FDCWD, from, AT_FDCWD, to, 0);
}
int symlinkat(const char* text, int folder, const char* path) noexcept {
    return static_cast<int>(Do("symlinkat", OfPath(folder, path),
                               [&] { return Call(SYS_symlinkat, Word(text), folder, Word(path)); }));
}
int symlink(const char* text, const char* path) noexcept {
    return symlinkat(text, AT_FDCWD, path);
}
int unlinkat(int folder, const char* path, int flags) noexcept {
    return static_cast<int>(
        Do("unlinkat", OfPath(folder, path), [&] { return Call(SYS_unlinkat, folder, Word(path), flags); }));
}
int unlink(const char* path) noexcept {
    return unlinkat(AT_FDCWD, path, 0);
}
int rmdir(const char* path) noexcept {
    return unlinkat(AT_FDCWD, path, AT_REMOVEDIR);
}
int remove(const char* path) noexcept {
    return unlinkat(AT_FDCWD, path, 0) == 0 || errno != EISDIR ? 0 : unlinkat(AT_FDCWD, path, AT_REMOVEDIR);
}
int mkdirat(int folder, const char* path, mode_t mode) noexcept {
    return static_cast<int>(
        Do("mkdirat", OfPath(folder, path), [&] { return Call(SYS_mkdirat, folder, Word(path), mode); }));
}
int mkdir(const char* path, mode_t mode) noexcept {
    return mkdirat(AT_FDCWD, path, mode);
}
int fchmodat(int folder, const char* path, mode_t mode, int /*flags*/) noexcept {
    return static_cast<int>(
        Do("fchmodat", OfPath(folder, path), [&] { return Call(SYS_fchmodat, folder, Word(path), mode); }));
}
int chmod(const char* path, mode_t mode) noexcept {
    return fchmodat(AT_FDCWD, path, mode, 0);
}
int fchownat(int folder, const char* path, uid_t user, gid_t group, int flags) noexcept {
    return static_cast<int>(Do("fchownat", OfPath(folder, path),
                               [&] { return Call(SYS_fchownat, folder, Word(path), user, group, flags); }));
}
int chown(const char* path, uid_t user, gid_t group) noexcept {
    return fchownat(AT_FDCWD, path, user, group, 0);
}

// Folders are read by libc; its own calls within these go nowhere else.
DIR* opendir(const char* path) {
    static const auto real = Real<DIR* (*)(const char*)>("opendir");
    return std::bit_cast<DIR*>(
        std::max(0L, Do("opendir", OfPath(AT_FDCWD, path), [&] { return Word(real(path)); })));
}
DIR* fdopendir(int file) {
    static const auto real = Real<DIR* (*)(int)>("fdopendir");
    return std::bit_cast<DIR*>(
        std::max(0L, Do("fdopendir", OfDescriptor(file), [&] { return Word(real(file)); })));
}
struct dirent* readdir(DIR* folder) {
    static const auto real = Real<struct dirent* (*)(DIR*)>("readdir");
    return std::bit_cast<struct dirent*>(
        std::max(0L, Do("readdir", OfDescriptor(dirfd(folder)), [&] { return Word(real(folder)); })));
}
struct dirent64* readdir64(DIR* folder) {
    return reinterpret_cast<struct dirent64*>(readdir(folder));
}
int closedir(DIR* folder) {
    static const auto real = Real<int (*)(DIR*)>("closedir");
    const Turn turn = Next("closedir", OfDescriptor(dirfd(folder)));
    const int result = real(folder);
    if (turn == Turn::killedAfter) Die();
    return turn == Turn::fails ? static_cast<int>(Failed()) : result;
}

} // extern "C"
