// The makers' buttons: which client is asked in which order, and what is opened.
#include "PanesFixture.h"

#include "panes/RootPane.h"

#include <algorithm>

namespace tallyforge::test {
namespace {

using Lines = std::vector<std::string>;

class RootPaneTest : public PanesTest {
  protected:
    /// A machine with programs for these schemes.
    void install(const Lines& schemes) {
        UIApplication::sharedApplication().setOpener({[this, schemes](const std::string& url) {
                                                          asked.push_back(url);
                                                          return std::ranges::count(schemes, url) > 0;
                                                      },
                                                      [this](const std::string& url) {
                                                          opened.push_back(url);
                                                          return true;
                                                      }});
    }
    /// What was opened by a tap on the row's button.
    Lines tap(const std::string& action) {
        opened.clear();
        asked.clear();
        for (const PSSpecifierRef& row : root.specifiers()) {
            if (row->textForKey("action") == action) PerformSelector(*row->target(), action, {nullptr, row});
        }
        return opened;
    }
    tallyforgeprefsListController root;
    Lines asked, opened;
};

const Lines kSchemes{"tweetbot:", "twitterrific:", "tweetings:", "twitter:"};

TEST_F(RootPaneTest, TheFirstInstalledClientShowsTheProfile) {
    for (size_t first = 0; first < kSchemes.size(); ++first) {
        SCOPED_TRACE(kSchemes[first]);
        install({kSchemes.begin() + static_cast<long>(first), kSchemes.end()});
        Lines urls = tap("followMe:");
        ASSERT_EQ(urls.size(), 1U);
        EXPECT_TRUE(urls[0].starts_with(kSchemes[first] + "//")) << urls[0];
        EXPECT_NE(urls[0].find("tallyforge"), std::string::npos);
        EXPECT_EQ(asked, Lines(kSchemes.begin(), kSchemes.begin() + static_cast<long>(first) + 1));
    }
}

TEST_F(RootPaneTest, WithoutAClientThePageIsShown) {
    install({});
    EXPECT_EQ(tap("followMe:"), Lines{"https://tallyforge.example/profile"});
    EXPECT_EQ(asked, kSchemes);
}

TEST_F(RootPaneTest, DonatingShowsItsPage) {
    install(kSchemes);
    EXPECT_EQ(tap("donate:"), Lines{"https://tallyforge.example/donate"});
    EXPECT_EQ(asked, Lines{});
    EXPECT_EQ(told, Lines{"open-url https://tallyforge.example/donate"});
}

TEST_F(RootPaneTest, NeitherWritesNorPostsAnything) {
    install({});
    told.clear();
    tap("followMe:");
    EXPECT_EQ(told, Lines{"open-url https://tallyforge.example/profile"});
}

} // namespace
} // namespace tallyforge::test
