#include "FaultInjection.h"
#include "TemporaryDevice.h"
#include "foundation/NSFileManager.h"

#include <cerrno>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>

namespace tallyforge {

namespace {

class NSFileManagerTests : public TemporaryDevice {
  protected:
    std::string whyUnreadable(std::string_view path, size_t limit = 4u << 20) const {
        const auto contents = files_.contentsAtPath(path, limit);
        return contents ? "readable" : contents.reason();
    }
    NSFileManager files_;
};

TEST_F(NSFileManagerTests, ReadsRegularFiles) {
    put("/a", std::string("x\0y", 3));
    put("/empty", "");
    ASSERT_TRUE(files_.contentsAtPath("/a"));
    EXPECT_EQ(*files_.contentsAtPath("/a"), (std::vector<uint8_t>{'x', 0, 'y'}));
    ASSERT_TRUE(files_.contentsAtPath("/empty"));
    EXPECT_TRUE(files_.contentsAtPath("/empty")->empty());
    const std::string large(1'000'000, 'q');
    put("/large", large);
    EXPECT_EQ(*files_.contentsAtPath("/large"), Bytes(large));
}

TEST_F(NSFileManagerTests, ReadsUpToTheLimitAndNoFurther) {
    put("/a", "12345");
    EXPECT_EQ(whyUnreadable("/a", 5), "readable");
    EXPECT_EQ(whyUnreadable("/a", 4), "larger than 4 bytes");
    put("/b", "");
    ASSERT_EQ(truncate(host("/b").c_str(), (4 << 20) + 1), 0);
    EXPECT_EQ(whyUnreadable("/b"), "larger than 4 MiB");
    ASSERT_EQ(truncate(host("/b").c_str(), 4 << 20), 0);
    EXPECT_EQ(whyUnreadable("/b"), "readable");
}

TEST_F(NSFileManagerTests, SaysWhyAFileCannotBeRead) {
    folder("/folder");
    put("/file", "");
    EXPECT_EQ(whyUnreadable("/none"), "no such file");
    EXPECT_EQ(whyUnreadable("/folder"), "a folder stands in its place");
    EXPECT_EQ(whyUnreadable("/file/below"), "a part of its path is not a folder");
    EXPECT_EQ(whyUnreadable(std::string_view("/file\0", 6)), "not a usable path");
    EXPECT_EQ(whyUnreadable("relative"), "not a usable path");
    EXPECT_EQ(whyUnreadable("/" + std::string(300, 'x')), "file name too long");
    link("loop", "/loop");
    EXPECT_EQ(whyUnreadable("/loop"), "too many symbolic links");
    link("/folder/none", "/dangling");
    EXPECT_EQ(whyUnreadable("/dangling"), "no such file");
}

TEST_F(NSFileManagerTests, WhatIsNoFileIsRefusedAtOnce) {
    ASSERT_EQ(mkfifo(host("/fifo").c_str(), 0666), 0); // nobody writes: an ordinary open would wait for ever
    alarm(20);
    EXPECT_EQ(whyUnreadable("/fifo"), "not a regular file");
    EXPECT_FALSE(files_.identityOfFileAtPath("/fifo").exists());
    link("fifo", "/link");
    EXPECT_EQ(whyUnreadable("/link"), "not a regular file");
    alarm(0);
    const int socket_ = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    host("/socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(whyUnreadable("/socket"), "not a regular file");
    close(socket_);
    if (mknod(host("/zero").c_str(), S_IFCHR | 0666, makedev(1, 5)) != 0) GTEST_SKIP() << "no device nodes";
    const std::string device = whyUnreadable("/zero");
    EXPECT_TRUE(device == "not a regular file" || device == "permission denied") << device; // nodev mounts
}

TEST_F(NSFileManagerTests, SaysWhenPermissionIsMissing) {
    put("/secret", "s");
    chmod(host("/secret").c_str(), 0);
    EXPECT_EQ(AsOrdinaryUser([this] { return whyUnreadable("/secret"); }), "permission denied");
}

// Of what is passed over in silence and of what is told of when a folder's files are read.
TEST_F(NSFileManagerTests, WhatWasNotReadMayBeAFile) {
    const auto mayBeAFile = [this](const char* path) {
        const auto bytes = files_.contentsAtPath(path, 4);
        return bytes ? "it is read" : files_.isUnreadFileAtPath(path, bytes.error(), 4) ? "yes" : "no";
    };
    put("/file", "text");
    put("/large", "a text");
    folder("/folder");
    ASSERT_EQ(mkfifo(host("/fifo").c_str(), 0666), 0);
    link("loop", "/loop");
    EXPECT_STREQ(mayBeAFile("/file"), "it is read");
    for (const char* path : {"/none", "/file/below", "/large", "/folder", "/fifo", "/loop"})
        EXPECT_STREQ(mayBeAFile(path), "no") << path;
    chmod(host("/file").c_str(), 0);
    EXPECT_EQ(AsOrdinaryUser([&] { return std::string(mayBeAFile("/file")); }), "yes");
    chmod(host("/large").c_str(), 0);
    EXPECT_EQ(AsOrdinaryUser([&] { return std::string(mayBeAFile("/large")); }), "no");
    // Nothing more can be learnt; what is known already counts.
    const auto folderRead = files_.contentsAtPath("/folder"), fifoRead = files_.contentsAtPath("/fifo");
    Faults faults;
    faults.fail("openat2", 0, EMFILE);
    EXPECT_FALSE(files_.isUnreadFileAtPath("/folder", folderRead.error()));
    EXPECT_FALSE(files_.isUnreadFileAtPath("/fifo", fifoRead.error()));
    EXPECT_STREQ(mayBeAFile("/file"), "yes");
}

TEST_F(NSFileManagerTests, TellsWhetherSomethingIsThere) {
    put("/a", "");
    folder("/f");
    link("a", "/link");
    link("none", "/dangling");
    EXPECT_TRUE(files_.fileExistsAtPath("/a"));
    EXPECT_TRUE(files_.fileExistsAtPath("/f"));
    EXPECT_TRUE(files_.fileExistsAtPath("/link"));
    EXPECT_FALSE(files_.fileExistsAtPath("/dangling"));
    EXPECT_FALSE(files_.fileExistsAtPath("/none"));
    EXPECT_FALSE(files_.fileExistsAtPath(std::string_view("/a\0", 3)));
}

TEST_F(NSFileManagerTests, AnotherVersionHasAnotherIdentity) {
    EXPECT_FALSE(files_.identityOfFileAtPath("/a").exists());
    folder("/f");
    EXPECT_FALSE(files_.identityOfFileAtPath("/f").exists());
    put("/a", "one");
    const auto first = files_.identityOfFileAtPath("/a");
    EXPECT_TRUE(first.exists());
    EXPECT_EQ(first.size, 3);
    EXPECT_EQ(first.inode, status("/a").st_ino);
    EXPECT_EQ(files_.identityOfFileAtPath("/a"), first);
    ASSERT_TRUE(files_.writeDataToFile("/a", Bytes("two")));
    EXPECT_NE(files_.identityOfFileAtPath("/a"), first);
}

TEST_F(NSFileManagerTests, ListsAFolderInTheOrderOfBytes) {
    for (const char* name : {"b", "a", "B", "\xC3\xA9", "a.b", ".hidden", "z"})
        put(std::string("/f/") + name, "");
    folder("/f/sub");
    ASSERT_TRUE(files_.contentsOfDirectoryAtPath("/f"));
    EXPECT_EQ(*files_.contentsOfDirectoryAtPath("/f"),
              (std::vector<std::string>{".hidden", "B", "a", "a.b", "b", "sub", "z", "\xC3\xA9"}));
    EXPECT_TRUE(files_.contentsOfDirectoryAtPath("/f/sub")->empty());
    EXPECT_EQ(files_.contentsOfDirectoryAtPath("/none").reason(), "no such file");
    EXPECT_EQ(files_.contentsOfDirectoryAtPath("/f/a").reason(), "not a folder");
}

TEST_F(NSFileManagerTests, CreatesFoldersWithThoseAbove) {
    const mode_t former = umask(077);
    const auto made = files_.createDirectoryAtPath("/a/b//c/");
    umask(former);
    ASSERT_TRUE(made) << made.reason();
    for (const char* path : {"/a", "/a/b", "/a/b/c"})
        EXPECT_EQ(status(path).st_mode, S_IFDIR | 0755u) << path;
    EXPECT_TRUE(files_.createDirectoryAtPath("/a/b/c"));
    EXPECT_TRUE(files_.createDirectoryAtPath("/"));
    folder("/private/var");
    link("/private/var", "/var");
    EXPECT_TRUE(files_.createDirectoryAtPath("/var/x/y"));
    EXPECT_TRUE(std::filesystem::is_directory(host("/private/var/x/y")));
}

TEST_F(NSFileManagerTests, SaysWhyAFolderCannotBeCreated) {
    put("/file", "");
    EXPECT_EQ(files_.createDirectoryAtPath("/file").reason(), "a part of its path is not a folder");
    EXPECT_EQ(files_.createDirectoryAtPath("/file/x").reason(), "a part of its path is not a folder");
    EXPECT_EQ(files_.createDirectoryAtPath("relative/x").reason(), "not a usable path");
    EXPECT_EQ(files_.createDirectoryAtPath("").reason(), "no such file");
    const std::string outside = root_ + "-outside";
    link(outside, "/out");
    EXPECT_EQ(files_.createDirectoryAtPath("/out/x").reason(), "no such file");
    EXPECT_FALSE(std::filesystem::exists(outside));
    folder("/f");
    chmod(host("/f").c_str(), 0555);
    EXPECT_EQ(AsOrdinaryUser([this] {
                  const auto made = files_.createDirectoryAtPath("/f/mine");
                  return made ? "made" : made.reason();
              }),
              "permission denied");
}

TEST_F(NSFileManagerTests, RemovesFilesAndLinksButNoFolders) {
    std::string traced;
    files_.setTrace([&](std::string_view verb, std::string_view path) {
        traced += std::string(verb) + " " + std::string(path) + "; ";
    });
    put("/f/a", "A");
    put("/f/kept", "K");
    link("kept", "/f/link");
    EXPECT_TRUE(files_.removeItemAtPath("/f/a"));
    EXPECT_TRUE(files_.removeItemAtPath("/f/link"));
    EXPECT_EQ(names("/f"), (std::vector<std::string>{"kept"}));
    EXPECT_EQ(files_.removeItemAtPath("/f").reason(), "a folder stands in its place");
    EXPECT_EQ(files_.removeItemAtPath("/f/").reason(), "a folder stands in its place");
    EXPECT_EQ(files_.removeItemAtPath("/f/..").reason(), "a folder stands in its place");
    EXPECT_EQ(files_.removeItemAtPath("/").reason(), "a folder stands in its place");
    EXPECT_EQ(files_.removeItemAtPath("/f/a").reason(), "no such file");
    EXPECT_EQ(files_.removeItemAtPath("/none/a").reason(), "no such file");
    EXPECT_EQ(files_.removeItemAtPath(std::string_view("/f/kept\0", 8)).reason(), "not a usable path");
    EXPECT_EQ(text("/f/kept"), "K");
    EXPECT_EQ(traced, "remove /f/a; remove /f/link; ");
}

TEST_F(NSFileManagerTests, WhatIsRemovedIsGoneForGood) {
    put("/f/a", "A");
    put("/f/b", "B");
    put("/f/one/c", "C");
    {
        const Faults faults;
        EXPECT_TRUE(files_.removeItemAtPath("/f/a"));
        EXPECT_EQ(faults.count("fsync"), 1);
        EXPECT_TRUE(files_.removeTreeAtPath("/f/one"));
        EXPECT_EQ(faults.count("fsync"), 1) << "of many, the folder is synced once";
        EXPECT_TRUE(files_.syncDirectoryAtPath("/f/"));
        EXPECT_EQ(faults.count("fsync"), 2);
    }
    Faults faults;
    faults.fail("fsync", 0, EIO);
    const std::string why = "syncing the folder after the removal: input/output error";
    EXPECT_EQ(files_.syncDirectoryAtPath("/f/").reason(), why);
    EXPECT_EQ(files_.removeItemAtPath("/f/b").reason(), why);
    EXPECT_EQ(names("/f"), std::vector<std::string>{});
}

TEST_F(NSFileManagerTests, WhatASaveThroughALinkLeftBehindIsRemovedWhereItLeads) {
    put("/elsewhere/.tallyforge-new", "a part");
    put("/elsewhere/real", "R");
    put("/f/.tallyforge-new", "not of this file");
    link("between", "/f/a");
    link("/elsewhere/real", "/f/between");
    files_.removeUnfinishedBehindLink("/f/none");
    files_.removeUnfinishedBehindLink("/elsewhere/real");
    EXPECT_EQ(names("/elsewhere"), (std::vector<std::string>{".tallyforge-new", "real"}));
    files_.removeUnfinishedBehindLink("/f/a");
    EXPECT_EQ(names("/elsewhere"), std::vector<std::string>{"real"});
    EXPECT_EQ(names("/f"), (std::vector<std::string>{".tallyforge-new", "a", "between"}));

    link("/missing/file", "/f/dangling");
    link("round", "/f/round");
    files_.removeUnfinishedBehindLink("/f/dangling");
    files_.removeUnfinishedBehindLink("/f/round");
    EXPECT_EQ(text("/f/.tallyforge-new"), "not of this file");
}

TEST_F(NSFileManagerTests, RemovesAFolderWithAllThatIsInIt) {
    put("/kept/a", "A");
    put("/f/one/two/b", "B");
    put("/f/c", "C");
    put("/f/one/.tallyforge-new", "half");
    link("../kept", "/f/link");
    EXPECT_TRUE(files_.removeTreeAtPath("/f"));
    EXPECT_FALSE(files_.fileExistsAtPath("/f"));
    EXPECT_EQ(text("/kept/a"), "A") << "what a link leads to stays";
    put("/g", "G");
    EXPECT_TRUE(files_.removeTreeAtPath("/g")) << "a file too";
    EXPECT_EQ(files_.removeTreeAtPath("/g").reason(), "no such file");
    EXPECT_FALSE(files_.removeTreeAtPath("/"));
    EXPECT_EQ(text("/kept/a"), "A");
}

} // namespace

} // namespace tallyforge
