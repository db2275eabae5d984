#pragma once

#include "foundation/DeviceRoot.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tallyforge {

/// A device root of its own for every test, gone afterwards. Host paths go around the code under test.
class TemporaryDevice : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (place() / "tallyforge-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
        std::filesystem::permissions(root_, std::filesystem::perms(0755));
        const auto set = DeviceRoot::set(root_);
        ASSERT_TRUE(set) << set.reason();
    }

    void TearDown() override { std::filesystem::remove_all(root_); }

    /// Where the root is made.
    virtual std::filesystem::path place() const { return std::filesystem::temp_directory_path(); }

    std::string host(const std::string& devicePath) const { return root_ + devicePath; }

    void put(const std::string& devicePath, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(host(devicePath)).parent_path());
        std::ofstream(host(devicePath), std::ios::binary) << text;
    }

    std::string text(const std::string& devicePath) const {
        std::ifstream file(host(devicePath), std::ios::binary);
        if (!file) return "<no file>";
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void link(const std::string& target, const std::string& devicePath) const {
        std::filesystem::create_directories(std::filesystem::path(host(devicePath)).parent_path());
        ASSERT_EQ(symlink(target.c_str(), host(devicePath).c_str()), 0);
    }

    void folder(const std::string& devicePath) const {
        std::filesystem::create_directories(host(devicePath));
    }

    struct stat status(const std::string& devicePath) const {
        struct stat found {};
        EXPECT_EQ(lstat(host(devicePath).c_str(), &found), 0) << devicePath;
        return found;
    }

    std::vector<std::string> names(const std::string& devicePath) const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(host(devicePath)))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

    std::string root_;
};

inline std::vector<uint8_t> Bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

/// What the work says when it is done in a child process that has no special rights.
inline std::string AsOrdinaryUser(const std::function<std::string()>& work) {
    int ends[2] = {};
    if (pipe(ends) != 0) return "<no pipe>";
    const pid_t child = fork();
    if (child == 0) {
        if (getuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0))
            _exit(1);
        const std::string said = work();
        const bool told = write(ends[1], said.data(), said.size()) == static_cast<ssize_t>(said.size());
        _exit(told ? 0 : 1);
    }
    close(ends[1]);
    std::string said;
    char buffer[4096];
    for (ssize_t got = 0; (got = read(ends[0], buffer, sizeof buffer)) > 0;)
        said.append(buffer, static_cast<size_t>(got));
    close(ends[0]);
    int ended = 0;
    waitpid(child, &ended, 0);
    return ended == 0 ? said : "<the child failed>";
}

} // namespace tallyforge
