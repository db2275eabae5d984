// The program's own device is furnished at its first use, whatever stands there already: it ends soon, and
// nothing is written through a link.

#include "OuterFolder.h"

namespace tallyforge::test {
namespace {

namespace fs = std::filesystem;

class HostileFurnishingTest : public testing::Test {
  protected:
    HostileFurnishingTest() {
        fs::create_directories(own());
        fs::create_directories(outer.outside() / "folder");
    }
    // Where XDG_DATA_HOME says.
    fs::path own() const { return outer.root() / "data/tallyforge/device"; }
    Ended list() const {
        outer.giveToNobody();
        return outer.tallyforge(
            {"list"}, 30, {{"TALLYFORGE_ROOT", ""}, {"XDG_DATA_HOME", (outer.root() / "data").string()}});
    }
    // Nothing is written outside, it is said why, and the command does its work all the same.
    void expectTold(const std::string& place, const std::string& why) const {
        const auto before = outer.surroundings();
        const Ended ended = list();
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_FALSE(ended.output.empty());
        EXPECT_EQ(ended.errorLines(), 1U) << ended.errors;
        EXPECT_NE(ended.errors.find((own() / place).string() + ": " + why), std::string::npos)
            << ended.errors;
        EXPECT_EQ(outer.surroundings(), before);
    }
    OuterFolder outer;
};

TEST_F(HostileFurnishingTest, FoldersThatAreLinksAreLeftAlone) {
    for (const char* place : {"Library", "var", "Applications", "var/mobile"}) {
        SCOPED_TRACE(place);
        fs::remove_all(own());
        fs::create_directories((own() / place).parent_path());
        fs::create_directory_symlink(outer.outside() / "folder", own() / place);
        expectTold(place, "a link stands in its place");
        EXPECT_TRUE(fs::is_symlink(own() / place));
    }
}

TEST_F(HostileFurnishingTest, FilesThatAreLinksAreLeftAlone) {
    const char* place = "Applications/AppStore.app/Info.plist";
    fs::create_directories((own() / place).parent_path());
    fs::create_symlink(outer.outside() / "archive", own() / place);
    expectTold(place, "a link stands in its place");
    EXPECT_TRUE(fs::is_symlink(own() / place));
}

TEST_F(HostileFurnishingTest, ThingsThatAreNoFilesAreLeftAlone) {
    const char* place = "Applications/AppStore.app/Info.plist";
    fs::create_directories((own() / place).parent_path());
    ASSERT_EQ(mkfifo((own() / place).c_str(), 0666), 0);
    expectTold(place, "not a regular file");
}

TEST_F(HostileFurnishingTest, AStampThatIsNoFileIsLeftAlone) {
    const fs::path stamp = own() / ".tallyforge-furnished";
    ASSERT_EQ(mkfifo(stamp.c_str(), 0666), 0);
    expectTold(".tallyforge-furnished", "not a regular file");
    fs::remove(stamp);
    fs::create_symlink(outer.outside() / "archive", stamp);
    expectTold(".tallyforge-furnished", "not a regular file");
    fs::remove(stamp);
    fs::create_symlink(stamp, stamp);
    expectTold(".tallyforge-furnished", "not a regular file");
    fs::remove(stamp);
    fs::create_directory(stamp);
    expectTold(".tallyforge-furnished", "not a regular file");
}

} // namespace
} // namespace tallyforge::test
