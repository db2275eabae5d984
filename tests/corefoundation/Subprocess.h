#pragma once

#include <csignal>
#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tallyforge {

/// Starts the program, found by the search path; with `output` its standard output goes there.
inline pid_t Start(const std::vector<std::string>& words, int output = -1) {
    std::vector<char*> arguments;
    for (const auto& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child != 0) return child;
    if (output >= 0) dup2(output, STDOUT_FILENO);
    execvp(arguments[0], arguments.data());
    std::perror(arguments[0]);
    _exit(127);
}

/// How the process ended: 0 when well.
inline int Ended(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

/// What the program printed; how it failed instead, when it did.
inline std::string Output(const std::vector<std::string>& words) {
    int ends[2] = {};
    if (pipe(ends) != 0) return "<no pipe>";
    const pid_t child = Start(words, ends[1]);
    close(ends[1]);
    std::string said;
    char buffer[4096];
    for (ssize_t got = 0; (got = read(ends[0], buffer, sizeof buffer)) > 0;)
        said.append(buffer, static_cast<size_t>(got));
    close(ends[0]);
    const int ended = Ended(child);
    return ended == 0 ? said : "<" + words[0] + " failed with status " + std::to_string(ended) + ">";
}

} // namespace tallyforge
