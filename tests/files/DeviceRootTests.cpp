// Device paths must mean the same, and stay inside the root, whether or not the kernel helps. The walk is
// judged by the kernel's own resolution.

#include "FaultInjection.h"
#include "TemporaryDevice.h"
#include "foundation/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <random>

namespace tallyforge {

namespace {

std::string error(int number) {
    return std::string("error ").append(std::to_string(number));
}

enum class Way { kernel, walkWithoutCall, walkInSandbox, walkWhileOthersMove };

class DeviceRootTests : public TemporaryDevice, public testing::WithParamInterface<Way> {
  protected:
    void SetUp() override {
        TemporaryDevice::SetUp();
        if (GetParam() == Way::walkWithoutCall) faults_.fail("openat2", 0, ENOSYS);
        if (GetParam() == Way::walkInSandbox) faults_.fail("openat2", 0, EPERM);
        // The kernel's answer to ".." while folders anywhere on the machine are moved; here without end.
        if (GetParam() == Way::walkWhileOthersMove) faults_.fail("openat2", 0, EAGAIN);
    }

    /// The text that is read through the path, or the error's number.
    std::string readThrough(std::string_view path, int flags = O_RDONLY) {
        const FileDescriptor file(DeviceRoot::open(path, flags));
        if (!file) return error(errno);
        char buffer[100];
        const ssize_t got = read(file.get(), buffer, sizeof buffer);
        return got < 0 ? "unreadable" : std::string(buffer, static_cast<size_t>(got));
    }

    Faults faults_;
};

INSTANTIATE_TEST_SUITE_P(Ways, DeviceRootTests,
                         testing::Values(Way::kernel, Way::walkWithoutCall, Way::walkInSandbox,
                                         Way::walkWhileOthersMove));

TEST_P(DeviceRootTests, OpensBelowTheRoot) {
    put("/var/mobile/a", "A");
    EXPECT_EQ(readThrough("/var/mobile/a"), "A");
    EXPECT_EQ(readThrough("//var/./mobile//a"), "A");
    EXPECT_EQ(readThrough("/var/mobile/../mobile/a"), "A");
    EXPECT_EQ(readThrough("/missing"), error(ENOENT));
    EXPECT_EQ(readThrough("/missing/a"), error(ENOENT));
    EXPECT_EQ(readThrough("/var/mobile/a/b"), error(ENOTDIR));
    EXPECT_EQ(readThrough("/var/mobile/a/"), error(ENOTDIR));
    EXPECT_EQ(readThrough("/var/mobile/a", O_RDONLY | O_DIRECTORY), error(ENOTDIR));
    EXPECT_GT(faults_.count("openat2"), 0);
    EXPECT_EQ(DeviceRoot::hostFolder(), root_);
}

TEST_P(DeviceRootTests, RefusesWhatIsNoAbsolutePath) {
    put("/a", "A");
    EXPECT_EQ(readThrough(""), error(ENOENT));
    EXPECT_EQ(readThrough("a"), error(EINVAL));
    EXPECT_EQ(readThrough(std::string_view("/a\0b", 4)), error(EINVAL));
    EXPECT_EQ(readThrough(std::string("/").append(256, 'n')), error(ENAMETOOLONG));
    std::string longPath;
    while (longPath.size() < 4096)
        longPath += "/.";
    EXPECT_EQ(readThrough(longPath + "/a"), error(ENAMETOOLONG));
}

TEST_P(DeviceRootTests, AbsoluteLinksStayInside) {
    put("/private/var/file", "inside");
    link("/private/var", "/var");
    link("/var/file", "/deep/er/link");
    EXPECT_EQ(readThrough("/var/file"), "inside");
    EXPECT_EQ(readThrough("/deep/er/link"), "inside");
}

TEST_P(DeviceRootTests, ParentLinksStayInside) {
    put("/etc/hostname", "the device");
    link("../../../../../../../../etc/hostname", "/a/up");
    link("/../../etc/hostname", "/a/rooted");
    EXPECT_EQ(readThrough("/a/up"), "the device");
    EXPECT_EQ(readThrough("/a/rooted"), "the device");
    EXPECT_EQ(readThrough("/../../../etc/hostname"), "the device");
    // Of this machine, but not of the device.
    EXPECT_EQ(readThrough("/../../../../proc/self/status"), error(ENOENT));
}

TEST_P(DeviceRootTests, ParentOfALinkIsTheParentOfWhatItNames) {
    put("/x/file", "beside the target");
    put("/file", "beside the link");
    folder("/x/y");
    link("/x/y", "/link");
    EXPECT_EQ(readThrough("/link/../file"), "beside the target");
}

TEST_P(DeviceRootTests, FortyLinksAreFollowedAndNoMore) {
    put("/0", "end");
    for (int i = 1; i <= 41; ++i)
        link(std::to_string(i - 1), std::string("/").append(std::to_string(i)));
    EXPECT_EQ(readThrough("/40"), "end");
    EXPECT_EQ(readThrough("/41"), error(ELOOP));
    link("loop", "/loop");
    EXPECT_EQ(readThrough("/loop"), error(ELOOP));
}

TEST_P(DeviceRootTests, CreatingThroughADanglingLinkStaysInside) {
    const std::string outside = root_ + "-outside";
    link(outside, "/absolute");
    link("../" + std::filesystem::path(outside).filename().string(), "/relative");
    for (const char* path : {"/absolute", "/relative"}) {
        const FileDescriptor file(DeviceRoot::open(path, O_WRONLY | O_CREAT, 0600));
        EXPECT_EQ(static_cast<bool>(file), std::string(path) == "/relative") << path;
    }
    EXPECT_FALSE(std::filesystem::exists(outside));
    EXPECT_TRUE(std::filesystem::exists(root_ + "/" + std::filesystem::path(outside).filename().string()));
    EXPECT_EQ(FileDescriptor(DeviceRoot::open("/absolute", O_WRONLY | O_CREAT | O_EXCL, 0600)).get(), -1);
    EXPECT_EQ(errno, EEXIST);
}

TEST_P(DeviceRootTests, ALinkIsNotFollowedWhenThatIsAsked) {
    put("/a", "A");
    link("a", "/link");
    EXPECT_EQ(readThrough("/link"), "A");
    EXPECT_EQ(readThrough("/link", O_RDONLY | O_NOFOLLOW), error(ELOOP));
}

TEST_P(DeviceRootTests, DescriptorsAreNotInheritedByOtherPrograms) {
    put("/a", "A");
    for (const int flags : {O_RDONLY, O_PATH}) {
        const FileDescriptor file(DeviceRoot::open("/a", flags));
        ASSERT_TRUE(file);
        EXPECT_EQ(fcntl(file.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    }
}

TEST_P(DeviceRootTests, CreatesWithTheMode) {
    const mode_t former = umask(0);
    const FileDescriptor file(DeviceRoot::open("/new", O_WRONLY | O_CREAT, 0640));
    umask(former);
    ASSERT_TRUE(file);
    EXPECT_EQ(status("/new").st_mode & 07777, 0640u);
}

class WalkTests : public TemporaryDevice {
  protected:
    static std::string outcome(const std::string& path, int flags, bool byKernel) {
        std::optional<Faults> faults;
        faults.emplace();
        if (!byKernel) faults->fail("openat2", 0, ENOSYS);
        const FileDescriptor file(DeviceRoot::open(path, flags));
        if (!file) return error(errno);
        struct stat found {};
        return fstat(file.get(), &found) == 0 ? std::string("inode ").append(std::to_string(found.st_ino))
                                              : "no status";
    }
};

TEST_F(WalkTests, MeansWhatTheKernelMeans) {
    put("/a/b/file", "1");
    put("/file", "2");
    folder("/a/c");
    link("/a", "/abs");
    link("../..", "/a/b/up");
    link("b/file", "/a/leaf");
    link("c/", "/a/slash");
    link("nowhere/at/all", "/a/dangling");
    link("loop", "/a/loop");
    link("file/", "/notfolder");
    link(".", "/a/c/here");
    const std::vector<std::string> parts = {"a",    "b",  "c",    "file",     "abs",  "up",
                                            "leaf", "..", ".",    "dangling", "loop", "notfolder",
                                            "here", "",   "none", "slash"};
    std::mt19937 random(20);
    int found = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::string path;
        const auto length = 1 + random() % 6;
        for (size_t i = 0; i < length; ++i)
            path += "/" + parts[random() % parts.size()];
        for (const int flags :
             {O_PATH, O_RDONLY, O_RDONLY | O_DIRECTORY, O_PATH | O_NOFOLLOW, O_RDONLY | O_NOFOLLOW}) {
            const std::string expected = outcome(path, flags, true);
            ASSERT_EQ(outcome(path, flags, false), expected) << path << " " << flags;
            found += expected.starts_with("inode");
        }
    }
    EXPECT_GT(found, 1000); // the paths do not all fail
}

} // namespace

} // namespace tallyforge
