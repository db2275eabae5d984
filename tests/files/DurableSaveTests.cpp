// A save is all or nothing: these tests let every step of it fail, and look at what is left.

#include "FaultInjection.h"
#include "TemporaryDevice.h"
#include "foundation/NSFileManager.h"

#include <cerrno>

namespace tallyforge {

namespace {

using Names = std::vector<std::string>;

class DurableSaveTests : public TemporaryDevice {
  protected:
    std::string save(std::string_view path, const std::string& text) {
        const auto saved = files_.writeDataToFile(path, Bytes(text));
        return saved ? "saved" : saved.reason();
    }

    /// Rewrites the file with the text; what was in its place is then in `seen_`.
    std::string rewrite(std::string_view path, const std::string& text, bool aside = false,
                        size_t limit = 4u << 20) {
        const auto saved = files_.rewriteFile(
            path,
            [&](const NSFileManager::Present& present, bool& keepAside) -> Result<std::vector<uint8_t>> {
                seen_ = present.exists ? "" : "nothing";
                if (present.exists && present.unreadable.empty())
                    seen_ = "[" + std::string(present.bytes.begin(), present.bytes.end()) + "]";
                else
                    seen_ += present.unreadable;
                keepAside = aside;
                return Bytes(text);
            },
            limit);
        return saved ? "saved" : saved.reason();
    }

    NSFileManager files_;
    std::string seen_;
};

TEST_F(DurableSaveTests, ANewFileHasItsModeWhateverTheMask) {
    folder("/f");
    const mode_t former = umask(077);
    EXPECT_EQ(save("/f/a", "new"), "saved");
    umask(former);
    EXPECT_EQ(text("/f/a"), "new");
    EXPECT_EQ(status("/f/a").st_mode, S_IFREG | 0644u);
    EXPECT_EQ(names("/f"), Names{"a"});
}

TEST_F(DurableSaveTests, AnExistingFileKeepsItsMode) {
    for (const mode_t mode : {0600u, 0664u, 0444u, 0755u}) {
        put("/f/a", "old");
        chmod(host("/f/a").c_str(), mode);
        EXPECT_EQ(save("/f/a", "new"), "saved");
        EXPECT_EQ(text("/f/a"), "new");
        EXPECT_EQ(status("/f/a").st_mode, S_IFREG | mode);
        EXPECT_EQ(rewrite("/f/a", "newer"), "saved");
        EXPECT_EQ(status("/f/a").st_mode, S_IFREG | mode);
        std::filesystem::remove(host("/f/a"));
    }
}

TEST_F(DurableSaveTests, AnExistingFileKeepsItsOwner) {
    if (getuid() != 0) GTEST_SKIP() << "only root can give files away";
    put("/f/a", "old");
    ASSERT_EQ(chown(host("/f/a").c_str(), 1234, 1235), 0);
    ASSERT_EQ(chmod(host("/f/a").c_str(), 06755), 0);
    EXPECT_EQ(save("/f/a", "new"), "saved");
    EXPECT_EQ(status("/f/a").st_uid, 1234u);
    EXPECT_EQ(status("/f/a").st_gid, 1235u);
    EXPECT_EQ(status("/f/a").st_mode, S_IFREG | 06755u);
}

TEST_F(DurableSaveTests, AFileWhoseOwnerCannotBeKeptIsNotReplaced) {
    if (getuid() != 0) GTEST_SKIP() << "only root can make a file of another owner";
    put("/f/a", "old");
    chmod(host("/f").c_str(), 0777);
    chmod(host("/f/a").c_str(), 0666);
    EXPECT_EQ(AsOrdinaryUser([this] { return save("/f/a", "new"); }),
              "keeping the owner: operation not permitted");
    EXPECT_EQ(text("/f/a"), "old");
    EXPECT_EQ(names("/f"), Names{"a"});
}

TEST_F(DurableSaveTests, TheStepsComeInTheirOrder) {
    put("/f/a", "old");
    Faults faults;
    EXPECT_EQ(save("/f/a", "new"), "saved");
    EXPECT_EQ(faults.calls(), (Names{"openat2", "write", "fsync", "renameat .tallyforge-new a", "fsync"}));
}

TEST_F(DurableSaveTests, ShortAndInterruptedWritesAreCarriedOn) {
    folder("/f");
    std::string large;
    for (int i = 0; i < 10'000; ++i)
        large += std::to_string(i);
    Faults faults;
    faults.shortWrites(1000);
    EXPECT_EQ(save("/f/a", large), "saved");
    EXPECT_EQ(text("/f/a"), large);
}

struct Failure {
    const char* call;
    int nth;
    int number;
    const char* reason;
};

class FailingSaveTests : public DurableSaveTests, public testing::WithParamInterface<Failure> {};

INSTANTIATE_TEST_SUITE_P(
    Steps, FailingSaveTests,
    testing::Values(Failure{"write", 1, ENOSPC, "writing the temporary file: no space left on device"},
                    Failure{"write", 2, EDQUOT, "writing the temporary file: disk quota exceeded"},
                    Failure{"fchmod", 1, EPERM, "keeping the mode: operation not permitted"},
                    Failure{"fsync", 1, EIO, "syncing the temporary file: input/output error"},
                    Failure{"renameat", 1, EROFS, "renaming the temporary file: read-only file system"}),
    [](const auto& tested) { return std::string(tested.param.call) + std::to_string(tested.param.nth); });

TEST_P(FailingSaveTests, TheOldFileStandsAndNothingIsLeftBehind) {
    put("/f/a", "old");
    chmod(host("/f/a").c_str(), 0666); // with the usual mask the temporary file needs its mode set
    const mode_t former = umask(022);
    const ino_t inode = status("/f/a").st_ino;
    for (const bool rewriting : {false, true}) {
        Faults faults;
        faults.shortWrites(2);
        faults.fail(GetParam().call, GetParam().nth, GetParam().number);
        EXPECT_EQ(rewriting ? rewrite("/f/a", "newer") : save("/f/a", "newer"), GetParam().reason);
        EXPECT_EQ(text("/f/a"), "old");
        EXPECT_EQ(status("/f/a").st_ino, inode);
        EXPECT_EQ(names("/f"), Names{"a"});
        EXPECT_LE(faults.count("fsync"), 1); // never a second time after a failure
    }
    umask(former);
    EXPECT_EQ(save("/f/a", "new"), "saved");
    EXPECT_EQ(text("/f/a"), "new");
}

TEST_F(DurableSaveTests, AFolderThatCannotBeSyncedIsAFailure) {
    put("/f/a", "old");
    Faults faults;
    faults.fail("fsync", 2, EIO);
    EXPECT_EQ(save("/f/a", "new"), "syncing the folder after the renaming: input/output error");
    EXPECT_EQ(names("/f"), Names{"a"});
}

TEST_F(DurableSaveTests, AStaleTemporaryFileIsRemoved) {
    put("/f/a", "old");
    put("/f/.tallyforge-new", "half of someth");
    EXPECT_EQ(save("/f/a", "new"), "saved");
    EXPECT_EQ(text("/f/a"), "new");
    EXPECT_EQ(names("/f"), Names{"a"});
}

TEST_F(DurableSaveTests, ALinkInTheTemporaryFilesPlaceIsNotWrittenThrough) {
    put("/victim", "untouched");
    put("/f/a", "old");
    link("/victim", "/f/.tallyforge-new");
    EXPECT_EQ(save("/f/a", "new"), "saved");
    EXPECT_EQ(text("/victim"), "untouched");
    EXPECT_EQ(text("/f/a"), "new");
}

TEST_F(DurableSaveTests, AFolderInTheTemporaryFilesPlaceIsAFailure) {
    put("/f/a", "old");
    folder("/f/.tallyforge-new");
    EXPECT_EQ(save("/f/a", "new"), "removing a stale temporary file: a folder stands in its place");
    EXPECT_EQ(text("/f/a"), "old");
}

TEST_F(DurableSaveTests, TheLongestNamesCanBeSaved) {
    folder("/f");
    std::string accented = "x"; // two-byte characters at odd places
    while (accented.size() < 255)
        accented += "\xC3\xA9";
    for (const std::string& name : {std::string(240, 'n'), std::string(255, 'n'), accented}) {
        EXPECT_EQ(save("/f/" + name, "1"), "saved");
        EXPECT_EQ(rewrite("/f/" + name, "2", true), "saved");
        EXPECT_EQ(rewrite("/f/" + name, "3", true), "saved");
        EXPECT_EQ(text("/f/" + name), "3");
        const auto all = names("/f");
        EXPECT_EQ(all.size(), 3u); // and two that were kept aside, under two names
        for (const auto& kept : all) {
            EXPECT_LE(kept.size(), 255u);
            std::filesystem::remove(host("/f/" + kept));
        }
    }
    EXPECT_EQ(save("/f/" + std::string(256, 'n'), "1"), "examining the old file: file name too long");
}

TEST_F(DurableSaveTests, BehindALinkTheNamedFileIsReplaced) {
    put("/real/folder/file", "old");
    link("/real/folder", "/way");
    link("../way/file", "/f/absolute-way");
    link("/real/nothing-yet", "/f/dangling");
    EXPECT_EQ(save("/f/absolute-way", "new"), "saved");
    EXPECT_EQ(text("/real/folder/file"), "new");
    EXPECT_EQ(rewrite("/f/absolute-way", "newer"), "saved");
    EXPECT_EQ(seen_, "[new]");
    EXPECT_EQ(text("/real/folder/file"), "newer");
    EXPECT_EQ(save("/f/dangling", "made"), "saved");
    EXPECT_EQ(text("/real/nothing-yet"), "made");
    EXPECT_TRUE(std::filesystem::is_symlink(host("/f/absolute-way")));
    EXPECT_TRUE(std::filesystem::is_symlink(host("/f/dangling")));
    EXPECT_EQ(names("/f"), (Names{"absolute-way", "dangling"}));
}

TEST_F(DurableSaveTests, NoLinkLeadsOutOfTheRoot) {
    const std::string outside = root_ + "-outside";
    link("../../../../../../../.." + outside, "/f/up");
    EXPECT_EQ(save("/f/up", "x"), "opening its folder: no such file");
    EXPECT_EQ(rewrite("/f/up", "x"), "opening its folder: no such file");
    EXPECT_FALSE(std::filesystem::exists(outside));
    link("loop", "/f/loop");
    EXPECT_EQ(save("/f/loop", "x"), "too many symbolic links");
    EXPECT_EQ(rewrite("/f/loop", "x"), "too many symbolic links");
}

TEST_F(DurableSaveTests, FoldersAndSpecialFilesAreNotReplaced) {
    folder("/f/folder");
    ASSERT_EQ(mkfifo(host("/f/fifo").c_str(), 0666), 0);
    link("folder", "/f/link");
    alarm(20);
    EXPECT_EQ(save("/f/folder", "x"), "a folder stands in its place");
    EXPECT_EQ(rewrite("/f/folder", "x", true), "a folder stands in its place");
    EXPECT_EQ(save("/f/link", "x"), "a folder stands in its place");
    EXPECT_EQ(save("/f/folder/", "x"), "a folder stands in its place");
    EXPECT_EQ(save("/f/..", "x"), "a folder stands in its place");
    EXPECT_EQ(save("/f/fifo", "x"), "not a regular file");
    EXPECT_EQ(rewrite("/f/fifo", "x", true), "not a regular file");
    alarm(0);
    EXPECT_EQ(names("/f"), (Names{"fifo", "folder", "link"}));
}

TEST_F(DurableSaveTests, APlaceThatIsNoneIsRefused) {
    EXPECT_EQ(save("/none/a", "x"), "opening its folder: no such file");
    EXPECT_EQ(save("a", "x"), "not a usable path");
    EXPECT_EQ(save("", "x"), "not a usable path");
    EXPECT_EQ(save(std::string_view("/a\0b", 4), "x"), "not a usable path");
    EXPECT_EQ(names("/"), Names{});
}

TEST_F(DurableSaveTests, AFolderWithoutPermissionIsAFailure) {
    put("/f/a", "old");
    chmod(host("/f").c_str(), 0555);
    EXPECT_EQ(AsOrdinaryUser([this] { return save("/f/a", "new"); }),
              "creating the temporary file: permission denied");
    EXPECT_EQ(text("/f/a"), "old");
}

TEST_F(DurableSaveTests, RewritingSeesWhatIsThere) {
    folder("/f");
    EXPECT_EQ(rewrite("/f/a", "one", true), "saved");
    EXPECT_EQ(seen_, "nothing");
    EXPECT_EQ(rewrite("/f/a", "two"), "saved");
    EXPECT_EQ(seen_, "[one]");
    EXPECT_EQ(rewrite("/f/a", "three", false, 2), "saved");
    EXPECT_EQ(seen_, "larger than 2 bytes");
    EXPECT_EQ(text("/f/a"), "three");
    EXPECT_EQ(names("/f"), Names{"a"});
}

TEST_F(DurableSaveTests, RewritingSeesThatAFileMayNotBeRead) {
    put("/f/a", "secret");
    chmod(host("/f").c_str(), 0777);
    chmod(host("/f/a").c_str(), 0);
    const std::string outcome = AsOrdinaryUser([this] {
        const auto saved = files_.rewriteFile(
            "/f/a", [](const NSFileManager::Present& present, bool&) -> Result<std::vector<uint8_t>> {
                return Error{std::string(present.exists ? "exists, " : "missing, ") + present.unreadable};
            });
        return saved ? std::string("saved") : saved.reason();
    });
    EXPECT_EQ(outcome, "exists, permission denied");
}

TEST_F(DurableSaveTests, AnEditThatRefusesWritesNothing) {
    put("/f/a", "old");
    Faults faults;
    const auto saved = files_.rewriteFile(
        "/f/a", [](const NSFileManager::Present&, bool& keepAside) -> Result<std::vector<uint8_t>> {
            keepAside = true;
            return Error{"not today"};
        });
    EXPECT_EQ(saved.reason(), "not today");
    EXPECT_EQ(names("/f"), Names{"a"});
    EXPECT_EQ(text("/f/a"), "old");
    EXPECT_EQ(faults.count("write") + faults.count("linkat") + faults.count("renameat"), 0);
}

TEST_F(DurableSaveTests, EveryFileKeptAsideStays) {
    put("/f/a", "bad 1");
    EXPECT_EQ(rewrite("/f/a", "bad 2", true), "saved");
    EXPECT_EQ(rewrite("/f/a", "bad 3", true), "saved");
    EXPECT_EQ(rewrite("/f/a", "good", true), "saved");
    EXPECT_EQ(names("/f"), (Names{"a", "a.unreadable", "a.unreadable.2", "a.unreadable.3"}));
    EXPECT_EQ(text("/f/a.unreadable"), "bad 1");
    EXPECT_EQ(text("/f/a.unreadable.2"), "bad 2");
    EXPECT_EQ(text("/f/a.unreadable.3"), "bad 3");
    EXPECT_EQ(text("/f/a"), "good");
}

TEST_F(DurableSaveTests, KeepingAsideIsDurableBeforeTheRenaming) {
    put("/f/a", "bad");
    Faults faults;
    EXPECT_EQ(rewrite("/f/a", "good", true), "saved");
    EXPECT_EQ(faults.calls(), (Names{"openat2", "write", "fsync", "linkat a a.unreadable", "fsync",
                                     "renameat .tallyforge-new a", "fsync"}));
}

TEST_F(DurableSaveTests, WithoutHardLinksACopyIsKept) {
    put("/f/a", "bad");
    chmod(host("/f/a").c_str(), 0640);
    put("/f/a.unreadable", "kept earlier");
    Faults faults;
    faults.fail("linkat", 0, EPERM);
    EXPECT_EQ(rewrite("/f/a", "good", true), "saved");
    EXPECT_EQ(text("/f/a.unreadable"), "kept earlier");
    EXPECT_EQ(text("/f/a.unreadable.2"), "bad");
    EXPECT_EQ(status("/f/a.unreadable.2").st_mode, S_IFREG | 0640u);
    EXPECT_EQ(text("/f/a"), "good");
}

TEST_F(DurableSaveTests, WhenKeepingAsideFailsNothingIsReplaced) {
    put("/f/a", "bad");
    struct Case {
        const char* call;
        int nth;
        int number;
        const char* reason;
    };
    for (const auto& [call, nth, number, reason] :
         {Case{"linkat", 1, ENOSPC, "keeping the old file aside: no space left on device"},
          Case{"fsync", 2, EIO, "syncing the folder of the file kept aside: input/output error"},
          Case{"renameat", 1, EIO, "renaming the temporary file: input/output error"}}) {
        Faults faults;
        faults.fail(call, nth, number);
        EXPECT_EQ(rewrite("/f/a", "good", true), reason);
        EXPECT_EQ(text("/f/a"), "bad");
        EXPECT_EQ(names("/f"), Names{"a"}) << reason;
    }
    Faults faults;
    faults.fail("linkat", 0, EPERM);
    faults.fail("write", 2, ENOSPC);
    EXPECT_EQ(rewrite("/f/a", "good", true),
              "keeping a copy of the old file: writing the temporary file: no space left on device");
    EXPECT_EQ(names("/f"), Names{"a"});
}

TEST_F(DurableSaveTests, ANewFileIsWrittenOnlyWhereNothingStands) {
    folder("/f/folder");
    const auto create = [this](std::string_view path) {
        const auto saved = files_.writeDataToNewFile(path, Bytes("new"));
        return saved ? "saved" : saved.reason();
    };
    EXPECT_EQ(create("/f/a"), "saved");
    put("/f/a", "old");
    link("a", "/f/link");
    EXPECT_EQ(create("/f/a"), "there is such a file already");
    EXPECT_EQ(create("/f/link"), "there is such a file already");
    EXPECT_EQ(create("/f/folder"), "a folder stands in its place");
    EXPECT_EQ(text("/f/a"), "old");
    EXPECT_EQ(names("/f"), (Names{"a", "folder", "link"}));
}

TEST_F(DurableSaveTests, AnItemIsRemovedAndAnotherPutInItsPlaceInOneStep) {
    std::string traced;
    files_.setTrace([&](std::string_view verb, std::string_view path) {
        traced += std::string(verb) + " " + std::string(path) + "; ";
    });
    const auto replace = [this](std::string_view path) {
        const auto saved = files_.removeItemAndWriteData(path, Bytes("new"));
        return saved ? "saved" : saved.reason();
    };
    folder("/f/folder");
    put("/victim", "untouched");
    put("/f/a", "old");
    chmod(host("/f/a").c_str(), 0600);
    link("/victim", "/f/link");
    for (const char* path : {"/f/a", "/f/link", "/f/none"}) {
        EXPECT_EQ(replace(path), "saved");
        EXPECT_EQ(text(path), "new");
        EXPECT_EQ(status(path).st_mode, S_IFREG | 0644u);
    }
    EXPECT_EQ(traced, "remove /f/a; write /f/a; remove /f/link; write /f/link; write /f/none; ");
    EXPECT_EQ(text("/victim"), "untouched");
    EXPECT_EQ(replace("/f/folder"), "a folder stands in its place");
    Faults faults;
    faults.fail("renameat", 1, EIO);
    EXPECT_EQ(replace("/f/a"), "renaming the temporary file: input/output error");
    EXPECT_EQ(names("/f"), (Names{"a", "folder", "link", "none"}));
}

TEST_F(DurableSaveTests, FilesThatAreBeingWrittenAreNobodysNames) {
    put("/f/a", "old");
    put("/f/.tallyforge-new", "half");
    put("/f/.tallyforge-copy", "half");
    const auto listed = files_.contentsOfDirectoryAtPath("/f");
    ASSERT_TRUE(listed);
    EXPECT_EQ(*listed, Names{"a"});
    EXPECT_EQ(save("/f/.tallyforge-new", "x"), "not a usable path");
    files_.removeUnfinishedInDirectory("/none/");
    files_.removeUnfinishedInDirectory("/f/");
    EXPECT_EQ(names("/f"), Names{"a"});
}

// A save that is killed between keeping the old file aside and the renaming has kept it: once is enough.
TEST_F(DurableSaveTests, WhatIsKeptAsideAlreadyIsNotKeptTwice) {
    put("/f/a", "bad");
    std::filesystem::create_hard_link(host("/f/a"), host("/f/a.unreadable"));
    EXPECT_EQ(rewrite("/f/a", "good", true), "saved");
    EXPECT_EQ(names("/f"), (Names{"a", "a.unreadable"}));
    EXPECT_EQ(text("/f/a.unreadable"), "bad");
}

TEST_F(DurableSaveTests, TheTraceHearsOfWhatWasWritten) {
    std::string traced;
    files_.setTrace([&](std::string_view verb, std::string_view path) {
        traced += std::string(verb) + " " + std::string(path) + "; ";
    });
    folder("/f");
    save("/f/a", "1");
    rewrite("/f/a", "2");
    save("/none/a", "3");
    EXPECT_EQ(traced, "write /f/a; write /f/a; ");
}

} // namespace

} // namespace tallyforge
