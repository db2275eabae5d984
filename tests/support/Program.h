#pragma once

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tallyforge::test {

/// How a program ended and what it said.
struct Ended {
    int status = -1; ///< exit status; 128 + the signal when one ended it; -1 when the time was up
    std::string output;
    std::string errors;
    long peakKilobytes = 0;

    size_t errorLines() const {
        size_t lines = 0;
        for (char c : errors)
            lines += c == '\n';
        return lines;
    }
};

/// A program that runs beside the test.
class Program {
  public:
    /// The environment is the test's own with these changes; an empty text takes the variable away.
    explicit Program(const std::vector<std::string>& words,
                     const std::map<std::string, std::string>& environment = {}) {
        char outName[] = "/tmp/tallyforge-out-XXXXXX";
        char errName[] = "/tmp/tallyforge-err-XXXXXX";
        out_ = mkostemp(outName, O_CLOEXEC);
        err_ = mkostemp(errName, O_CLOEXEC);
        unlink(outName);
        unlink(errName);
        std::vector<char*> arguments;
        for (const std::string& word : words)
            arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        child_ = fork();
        if (child_ != 0) return;
        for (const auto& [name, value] : environment)
            value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
        int nothing = open("/dev/null", O_RDONLY);
        dup2(nothing, STDIN_FILENO);
        dup2(out_, STDOUT_FILENO);
        dup2(err_, STDERR_FILENO);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    ~Program() {
        if (child_ > 0) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
        close(out_);
        close(err_);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t id() const { return child_; }
    std::string output() const { return textOf(out_); }
    /// Waits for its end.
    Ended wait(double seconds = 60) {
        Ended ended;
        auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        int status = 0;
        struct rusage usage {};
        pid_t gone = 0;
        while ((gone = wait4(child_, &status, WNOHANG, &usage)) == 0 &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (gone == child_) {
            child_ = -1;
            ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            ended.peakKilobytes = usage.ru_maxrss;
        }
        ended.output = textOf(out_);
        ended.errors = textOf(err_);
        return ended;
    }

  private:
    static std::string textOf(int descriptor) {
        std::string text;
        char buffer[4096];
        off_t at = 0;
        for (ssize_t got = 0; (got = pread(descriptor, buffer, sizeof buffer, at)) > 0; at += got)
            text.append(buffer, static_cast<size_t>(got));
        return text;
    }
    pid_t child_ = -1;
    int out_ = -1;
    int err_ = -1;
};

inline Ended RunProgram(const std::vector<std::string>& words,
                        const std::map<std::string, std::string>& environment = {}, double seconds = 60) {
    return Program(words, environment).wait(seconds);
}

} // namespace tallyforge::test
