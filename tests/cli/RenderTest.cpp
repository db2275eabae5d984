// render: the preview as a PNG file.

#include "CommandFixture.h"

#include "rastergraphics/RasterGraphics.h"

namespace tallyforge::test {

class RenderTest : public CommandTest {
  protected:
    void SetUp() override {
        device.furnish();
        if (!Graphics::current()) Graphics::install(MakeRasterGraphics());
    }
    std::string out(const char* name = "out.png") const { return (device.root() / name).string(); }
    CGImageRef picture(const std::string& file) const {
        std::string bytes = bytesOf(file);
        return Graphics::current()->decodeImage(
            {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    }
    CGImageRef render(std::vector<std::string> words) const {
        words.insert(words.begin(), {"render", out()});
        Ended ended = tallyforge(words);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(ended.output + ended.errors, "");
        return picture(out());
    }
};

TEST_F(RenderTest, IsAsWideAsTheScreenAndAsHighAsThePanesRow) {
    struct Row {
        std::vector<std::string> words;
        int width;
        int height;
    };
    for (const Row& row : std::vector<Row>{{{}, 750, 300},
                                           {{"--idiom", "pad"}, 1536, 300},
                                           {{"--scale", "1"}, 375, 150},
                                           {{"--scale", "1.5"}, 563, 225},
                                           {{"--scale", "3"}, 1125, 450},
                                           {{"--size", "320x44"}, 640, 300},
                                           {{"--size", "500x200", "--scale", "1"}, 500, 200}}) {
        CGImageRef image = render(row.words);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->width(), row.width);
        EXPECT_EQ(image->height(), row.height);
    }
}

// With nothing set the badge is a green square in a red one at the icon's top right: its frame is 24 x 24
// with the right edge 9 points beyond the icon's (centre 200, width 60), the top 9 above the icon's top (45).
TEST_F(RenderTest, ShowsWhatIsSet) {
    CGImageRef image = render({});
    auto at = [&](double x, double y) {
        return image->pixel(static_cast<int>(x * 2), static_cast<int>(y * 2));
    };
    EXPECT_EQ(at(238, 48), 0xFFFF0000U); // border: 1.8 points on each side
    EXPECT_EQ(at(235, 56), 0xFF00FF00U); // fill
    EXPECT_EQ(at(5, 5), 0xFFFFFFFFU);    // the cell

    ASSERT_EQ(tallyforge({"set", "badgebgcol", "#2040C0", "badgebordersize", "0"}).status, 0);
    image = render({});
    EXPECT_EQ(at(238, 48), 0xFF2040C0U);
}

TEST_F(RenderTest, ShowsTheMomentThatIsAskedFor) {
    ASSERT_EQ(tallyforge({"set", "badgeanimtype", "11", "badgeanimspd", "1"}).status,
              0); // fades out in a second
    auto green = [&](const char* time) {
        CGImageRef image = render({"--time", time});
        return (image->pixel(235 * 2, 56 * 2) >> 8) & 0xFF;
    };
    EXPECT_EQ(green("0"), 255U);
    CGImageRef gone = render({"--time", "1"});
    ASSERT_EQ(tallyforge({"set", "badgealpha", "0", "badgeanimtype", "0"}).status, 0);
    CGImageRef none = render({});
    EXPECT_EQ(gone->pixel(235 * 2, 56 * 2), none->pixel(235 * 2, 56 * 2));
}

TEST_F(RenderTest, FailsWithOneLineAndLeavesWhatIsThere) {
    expectComplaint(tallyforge({"render", out("no/such/folder.png")}), 1);
    std::filesystem::create_directory(out("folder.png"));
    expectComplaint(tallyforge({"render", out("folder.png")}), 1);
    EXPECT_TRUE(std::filesystem::is_directory(out("folder.png")));
    expectComplaint(tallyforge({"render", out(), "--size", "4000x4000", "--scale", "8"}), 1);
    expectComplaint(tallyforge({"render", out(), "--size", "1x1", "--scale", "0.25"}), 1);
    EXPECT_FALSE(std::filesystem::exists(out()));
}

TEST_F(RenderTest, WritesThroughALinkAndIntoAPipe) {
    std::filesystem::create_symlink(out("real.png"), out("link.png"));
    EXPECT_EQ(tallyforge({"render", out("link.png")}).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(out("link.png")));
    EXPECT_TRUE(picture(out("real.png")));

    Ended piped = RunProgram({"sh", "-c", "'" TALLYFORGE_BIN "/tallyforge' render /dev/stdout | head -c 4"},
                             {{"TALLYFORGE_ROOT", device.root().string()}});
    EXPECT_EQ(piped.output, "\x89PNG");
}

TEST_F(RenderTest, DrawsAnEmptyDeviceToo) {
    TestDevice empty;
    Ended ended = tallyforge({"render", out(), "--root", empty.root().string()});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_TRUE(picture(out()));
}

TEST_F(RenderTest, WithoutACommandPicturesAreMadeAndNamed) {
    std::string data = (device.root() / "data").string();
    Ended ended = RunProgram({TALLYFORGE_BIN "/tallyforge"},
                             {{"XDG_DATA_HOME", data}, {"TALLYFORGE_ROOT", device.root().string()}});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    std::istringstream lines(ended.output);
    int pictures = 0;
    for (std::string file; std::getline(lines, file); ++pictures)
        EXPECT_GT(std::filesystem::file_size(file), 1000U) << file;
    EXPECT_EQ(pictures, 6);
}

} // namespace tallyforge::test
