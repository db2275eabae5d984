// URLs are handed to the desktop's programs, for which programs of the test stand in.

#include "window/URLOpener.h"
#include "support/Program.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace tallyforge {

namespace {

class URLOpenerTest : public testing::Test {
  protected:
    URLOpenerTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-urls-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        oldPath_ = getenv("PATH");
        setenv("PATH", (folder_.string() + ":" + oldPath_).c_str(), 1);
    }
    ~URLOpenerTest() override {
        setenv("PATH", oldPath_.c_str(), 1);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    void program(const std::string& name, const std::string& script) {
        std::ofstream(folder_ / name) << "#!/bin/sh\n" << script << "\n";
        std::filesystem::permissions(folder_ / name, std::filesystem::perms::owner_all);
    }
    std::string linesOf(const std::string& name) const {
        std::ifstream file(folder_ / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void opensInto(const std::string& name) {
        program("xdg-open", "printf '%s\\n' \"$1\" >'" + (folder_ / name).string() + "'");
    }
    void onlyOwnPrograms() { setenv("PATH", folder_.c_str(), 1); }

    std::filesystem::path folder_;
    std::string oldPath_;
    UIApplication::Opener opener_ = DesktopOpener();
};

TEST_F(URLOpenerTest, BrowsersTakeWebPages) {
    opensInto("opened");
    EXPECT_TRUE(opener_.canOpen("https://example.org/a?b=c"));
    EXPECT_TRUE(opener_.canOpen("HTTP://example.org"));
    EXPECT_TRUE(opener_.open("https://example.org/a?b=c&d=$(x)"));
    for (int i = 0; i < 500 && linesOf("opened").empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(linesOf("opened"), "https://example.org/a?b=c&d=$(x)\n");
}

TEST_F(URLOpenerTest, OtherProgramsAreAskedFor) {
    opensInto("opened");
    program("xdg-mime", "printf '%s\\n' \"$*\" >>'" + (folder_ / "asked").string() +
                            "'; [ \"$3\" = x-scheme-handler/tweets ] && echo tweets.desktop; exit 0");
    EXPECT_TRUE(opener_.canOpen("tweets://user?name=x"));
    EXPECT_FALSE(opener_.canOpen("birds://user"));
    EXPECT_FALSE(opener_.canOpen("BIRDS://other"));
    EXPECT_EQ(linesOf("asked"), // once for each of them
              "query default x-scheme-handler/tweets\nquery default x-scheme-handler/birds\n");
    EXPECT_EQ(linesOf("opened"), "");
}

TEST_F(URLOpenerTest, WhatNothingOpensIsSaid) {
    onlyOwnPrograms();
    for (const char* url : {"https://example.org/a", "birds://user"}) {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(opener_.open(url));
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "tallyforge: window: " + std::string(url) + ": no program on this machine opens it\n");
    }
    testing::internal::CaptureStderr();
    EXPECT_FALSE(opener_.canOpen("birds://user"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(URLOpenerTest, WhatIsNoURLIsNotEvenAskedFor) {
    opensInto("opened");
    program("xdg-mime", "echo asked >>'" + (folder_ / "asked").string() + "'; echo some.desktop");
    for (const char* url : {"", "nothing", ":x", "/etc/passwd", "a b://x", "1a://x", "-a://x", "../x:y"})
        EXPECT_FALSE(opener_.canOpen(url)) << url;
    EXPECT_EQ(linesOf("asked"), "");
}

TEST_F(URLOpenerTest, NothingOpensWithoutADesktop) {
    onlyOwnPrograms();
    EXPECT_FALSE(opener_.canOpen("https://example.org"));
    EXPECT_FALSE(opener_.open("https://example.org"));
    opensInto("opened");
    EXPECT_TRUE(opener_.canOpen("https://example.org"));
    EXPECT_FALSE(opener_.canOpen("tweets://user")); // nobody to ask
}

TEST_F(URLOpenerTest, AnAnswerIsNotWaitedForForever) {
    opensInto("opened");
    program("xdg-mime", "exec sleep 60");
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_FALSE(opener_.canOpen("tweets://user"));
    EXPECT_FALSE(opener_.canOpen("tweets://user"));
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::milliseconds(1900));
}

} // namespace

} // namespace tallyforge
