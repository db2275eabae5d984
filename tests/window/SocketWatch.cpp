// socket_watch LOG PROGRAM [WORD ...]: runs the program and ends as it ends. Each call by which the program,
// a thread or a child of it makes a socket, names one or sends to one by name is a line of the file LOG,
// "CALL FAMILY [NAME]". The kernel itself tells of them, from the program's first instruction on: whoever
// makes the call, and by whatever way, it is seen. The calls are done as ever; those that nobody could look
// into end the program by SIGSYS.

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

static_assert(std::endian::native == std::endian::little,
              "the filter looks at the lower halves of arguments");

#if defined(__x86_64__)
constexpr unsigned kMachine = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr unsigned kMachine = AUDIT_ARCH_AARCH64;
#else
#error "the machine's number is not known here"
#endif
constexpr unsigned kFirstForeignCall = 0x40000000; // x86-64 has a second set of calls, from here on

struct Watched {
    int number;
    const char* name;
};
constexpr Watched kWatched[] = {{SYS_socket, "socket"},   {SYS_socketpair, "socketpair"},
                                {SYS_connect, "connect"}, {SYS_bind, "bind"},
                                {SYS_listen, "listen"},   {SYS_accept, "accept"},
                                {SYS_accept4, "accept"},  {SYS_sendto, "sendto"},
                                {SYS_sendmsg, "sendmsg"}, {SYS_sendmmsg, "sendmsg"}};

/// Lets the kernel ask about those calls before it does them. The descriptor that it asks through; below 0
/// when it does not.
long WatchFromHereOn() {
    std::array<sock_filter, 64> program{};
    unsigned short length = 0;
    const auto add = [&](sock_filter step) { program.at(length++) = step; };
    const auto load = [&](size_t from) { add(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, unsigned(from))); };
    const auto end = [&](unsigned how) { add(BPF_STMT(BPF_RET | BPF_K, how)); };
    const auto unless = [&](unsigned short compared, unsigned with) {
        add(BPF_JUMP(BPF_JMP | compared | BPF_K, with, 0, 1));
    };
    load(offsetof(seccomp_data, arch));
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kMachine, 1, 0));
    end(SECCOMP_RET_KILL_PROCESS);
    load(offsetof(seccomp_data, nr));
    unless(BPF_JGE, kFirstForeignCall);
    end(SECCOMP_RET_KILL_PROCESS);
    unless(BPF_JEQ, SYS_io_uring_setup); // what is queued there are no calls
    end(SECCOMP_RET_KILL_PROCESS);
    for (const Watched& call : kWatched) {
        if (call.number == SYS_sendto) continue;
        unless(BPF_JEQ, unsigned(call.number));
        end(SECCOMP_RET_USER_NOTIF);
    }
    // Most that is sent goes to whom the socket is connected to: there is no address.
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_sendto, 1, 0));
    end(SECCOMP_RET_ALLOW);
    for (const size_t half : {0, 4}) {
        load(offsetof(seccomp_data, args) + 4 * sizeof(uint64_t) + half);
        add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 1, 0));
        end(SECCOMP_RET_USER_NOTIF);
    }
    end(SECCOMP_RET_ALLOW);
    const sock_fprog filter{length, program.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return -1;
    return syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &filter);
}

template <class T>
bool Read(pid_t process, uint64_t from, T* into, size_t bytes) {
    const iovec here{into, bytes};
    const iovec there{std::bit_cast<void*>(from), bytes};
    return process_vm_readv(process, &here, 1, &there, 1, 0) == ssize_t(bytes);
}

std::string Family(uint64_t number) {
    switch (number) {
    case AF_UNSPEC:
        return "none";
    case AF_UNIX:
        return "unix";
    case AF_INET:
        return "inet";
    case AF_INET6:
        return "inet6";
    default:
        return "family " + std::to_string(number);
    }
}

/// A family and, as far as it is understood, the name in it. An abstract name begins with "@".
std::string Address(pid_t process, uint64_t at, uint64_t size) {
    sockaddr_storage address{};
    const size_t length = std::min<size_t>(size, sizeof address);
    if (length < sizeof address.ss_family || !Read(process, at, &address, length)) return "unreadable";
    std::string text = Family(address.ss_family);
    if (address.ss_family == AF_UNIX) {
        std::string name(reinterpret_cast<const char*>(&address) + offsetof(sockaddr_un, sun_path),
                         length - offsetof(sockaddr_un, sun_path));
        if (!name.empty() && name[0] == '\0')
            name[0] = '@';
        else
            name.resize(strnlen(name.data(), name.size()));
        std::replace_if(
            name.begin(), name.end(), [](unsigned char c) { return c < ' '; }, '?');
        text += " " + name;
    } else if (address.ss_family == AF_INET) {
        char name[INET_ADDRSTRLEN] = "";
        const auto* inet = reinterpret_cast<const sockaddr_in*>(&address);
        inet_ntop(AF_INET, &inet->sin_addr, name, sizeof name);
        text += " " + std::string(name) + " " + std::to_string(ntohs(inet->sin_port));
    }
    return text;
}

/// The address of one message, or nothing where it goes to whom the socket is connected to.
std::string Named(pid_t process, uint64_t at) {
    msghdr message{};
    if (!Read(process, at, &message, sizeof message)) return "unreadable";
    if (!message.msg_name) return {};
    return Address(process, std::bit_cast<uint64_t>(message.msg_name), message.msg_namelen);
}

void Note(int log, const std::string& line) {
    const std::string whole = line + "\n";
    if (write(log, whole.data(), whole.size()) != ssize_t(whole.size())) {
        std::perror("socket_watch: log");
        _exit(70);
    }
}

void NoteCall(int log, pid_t process, const seccomp_data& call) {
    const auto* const found = std::find_if(std::begin(kWatched), std::end(kWatched),
                                           [&call](const Watched& each) { return each.number == call.nr; });
    const std::string name = found == std::end(kWatched) ? "call " + std::to_string(call.nr) : found->name;
    const auto* a = call.args;
    switch (call.nr) {
    case SYS_socket:
    case SYS_socketpair:
        return Note(log, name + " " + Family(unsigned(a[0])));
    case SYS_connect:
    case SYS_bind:
        return Note(log, name + " " + Address(process, a[1], unsigned(a[2])));
    case SYS_sendto:
        return Note(log, name + " " + Address(process, a[4], unsigned(a[5])));
    case SYS_sendmsg:
    case SYS_sendmmsg:
        for (uint64_t i = 0, many = call.nr == SYS_sendmmsg ? unsigned(a[2]) : 1; i < many; ++i) {
            const std::string address = Named(process, a[1] + i * sizeof(mmsghdr));
            if (!address.empty()) Note(log, std::string(name).append(" ").append(address));
        }
        return;
    default:
        return Note(log, name);
    }
}

/// Writes down what the kernel asks about, and lets it be done.
void Answer(int listener, int log) {
    seccomp_notif asked{};
    if (ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &asked) != 0) return; // who called is no more
    NoteCall(log, pid_t(asked.pid), asked.data);
    seccomp_notif_resp answer{};
    answer.id = asked.id;
    answer.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
    ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &answer);
}

[[noreturn]] void RunWatched(char** words, int toWatcher) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const long listener = WatchFromHereOn();
    if (write(toWatcher, &listener, sizeof listener) == sizeof listener && listener >= 0)
        execvp(words[0], words);
    std::fprintf(stderr, "socket_watch: %s: %s\n", words[0], std::strerror(errno));
    _exit(127);
}

int Fail(const char* what) {
    std::fprintf(stderr, "socket_watch: %s: %s\n", what, std::strerror(errno));
    return 70;
}

} // namespace

int main(int count, char** words) {
    if (count < 3) {
        std::fputs("usage: socket_watch LOG PROGRAM [WORD ...]\n", stderr);
        return 2;
    }
    const int log = open(words[1], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (log < 0) return Fail(words[1]);
    int told[2];
    if (pipe2(told, O_CLOEXEC) != 0) return Fail("pipe");
    // The child opens the listener in a table of descriptors that is this one's too; its program gets a copy
    // of it.
    const auto child = pid_t(syscall(SYS_clone, CLONE_FILES | SIGCHLD, 0, 0, 0, 0));
    if (child == 0) RunWatched(words + 2, told[1]);
    if (child < 0) return Fail("clone");
    long listener = -1;
    if (read(told[0], &listener, sizeof listener) != sizeof listener || listener < 0) {
        waitpid(child, nullptr, 0);
        return Fail("calls cannot be watched");
    }
    const int ended = int(syscall(SYS_pidfd_open, child, 0));
    if (ended < 0) return Fail("pidfd_open");
    std::array<pollfd, 2> heard{{{int(listener), POLLIN, 0}, {ended, POLLIN, 0}}};
    do {
        if (poll(heard.data(), heard.size(), -1) < 0 && errno != EINTR) return Fail("poll");
        if (heard[0].revents & POLLIN) Answer(int(listener), log);
    } while (!(heard[1].revents & POLLIN));
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
