// Whatever the domain holds, the preview must be what the rules make of it: the real preview is compared with
// a model of them that shares no code with it.

#include "RandomDomain.h"
#include "PreviewComparison.h"
#include "PreviewFixture.h"

#include "quartzcore/RenderServer.h"

namespace tallyforge::test {
namespace {

/// Sizes of the artwork and of the screen that one round of domains is shown with.
struct Surroundings {
    uint32_t seed;
    int screenScale;
    CGSize plate, cross, dot, outline, glow;
    uint32_t artworkColor;
    CGSize cell;
};

void PrintTo(const Surroundings& s, std::ostream* out) {
    *out << "seed " << s.seed;
}

class RandomDomainTest : public PreviewFixture, public testing::WithParamInterface<Surroundings> {
  protected:
    void writeArtwork(const std::string& path, const CGSize& size) const {
        const int w = int(size.width), h = int(size.height), scale = GetParam().screenScale;
        writePicture(path + ".png", *filled(w, h, GetParam().artworkColor));
        if (scale > 1) writePicture(path + "@2x.png", *filled(w * 2, h * 2, GetParam().artworkColor));
    }
    /// Four fields: one that counts as bright, one as dark, and two that are neither.
    void writeIcon(const std::string& path, int side) const {
        for (int scale = 1; scale <= GetParam().screenScale; ++scale) {
            const int pixels = side * scale, half = pixels / 2;
            auto image = std::make_shared<CGImage>(pixels, pixels);
            for (int y = 0; y < pixels; ++y)
                for (int x = 0; x < pixels; ++x)
                    image->row(y)[x] = y < half ? (x < half ? 0xFFFAF0E6 : 0xFF141E0A)
                                                : (x < half ? 0xFFC8285A : 0xFF3CB4DC);
            writePicture(path + (scale == 2 ? "@2x.png" : ".png"), *image);
        }
    }
    void SetUp() override {
        const Surroundings& s = GetParam();
        be(UIUserInterfaceIdiomPhone, s.screenScale);
        writeArtwork(kSpringBoard + "IconBadgeAndCloseBox", s.plate);
        writeArtwork(kSpringBoard + "IconCloseBoxX", s.cross);
        writeArtwork(kSpringBoard + "IconNewDot", s.dot);
        writeArtwork(kBundle + "icon_shape", s.outline);
        CGSize glow = s.glow;
        size_t index = 0;
        for (const char* name : {"circle", "square", "triangle", "hexagon", "star", "icon"}) {
            writeArtwork(kBundle + "glow_" + name, glow);
            glows_[index++] = glow;
            glow.width += 2;
        }
        writeIcon("/Applications/AppStore.app/AppIcon60x60", 60);
        writeIcon("/Applications/AppStore.app/AppIcon76x76", 76);
        for (auto idiom : {UIUserInterfaceIdiomPhone, UIUserInterfaceIdiomPad}) {
            be(idiom, s.screenScale);
            cells_.push_back(cell({}, s.cell.width, s.cell.height));
            devices_.push_back(modelDevice(*cells_.back(), idiom == UIUserInterfaceIdiomPad ? 76 : 60));
        }
    }
    ModelDevice modelDevice(const PreviewCell& made, CGFloat side) const {
        const Surroundings& s = GetParam();
        ModelDevice device;
        device.cell = s.cell;
        device.icon = {side, side};
        device.nameLabel = {
            NSStringBoundingSize("App Store", {400, 20}, UIFont::systemFontOfSize(side == 76 ? 14 : 12))
                .width,
            s.cell.height};
        device.automatic = ModelAutomaticColors(*made.iconView()->image().uprightBitmap(), s.screenScale);
        device.plate = s.plate;
        device.cross = s.cross;
        device.dot = s.dot;
        device.outline = s.outline;
        device.glows = glows_;
        device.artworkColor = s.artworkColor;
        return device;
    }
    /// Shows the domain on a phone and on a tablet and says in what they differ from the model.
    std::string differences(const Dictionary& domain) {
        std::string result;
        device_.writeDomain(domain);
        for (size_t i = 0; i < 2; ++i) {
            be(i ? UIUserInterfaceIdiomPad : UIUserInterfaceIdiomPhone, GetParam().screenScale);
            const PreviewCell& shown = *cells_[i];
            cells_[i]->realod();
            const ModelMarks marks = PreviewModel(domain, devices_[i]);
            const auto& onIcon = shown.iconView()->subviews();
            const auto& onName = shown.iconLabel()->subviews();
            if (onIcon.size() != 3 || onIcon[0] != shown.iconLabel() || onIcon[1] != shown.badgeView() ||
                onIcon[2] != shown.closeBoxView() || onName.size() != 1 || onName[0] != shown.newDotView())
                return "the marks are not where they belong\n";
            for (bool later : {false, true}) {
                result += Differences(marks.badge, *shown.badgeView(), later);
                result += Differences(marks.closeBox, *shown.closeBoxView(), later);
                result += Differences(marks.newDot, *shown.newDotView(), later);
                if (!later) MainQueue::main().runUntil(clock_, clock_.nanoseconds() + 200'000'000);
            }
        }
        return result;
    }

    std::array<CGSize, 6> glows_;
    std::vector<std::shared_ptr<PreviewCell>> cells_;
    std::vector<ModelDevice> devices_;
};

constexpr int kDomains = 1000;

TEST_P(RandomDomainTest, ThePreviewIsWhatTheRulesMakeOfTheDomain) {
    RandomDomain domains(GetParam().seed);
    for (int i = 0; i < kDomains; ++i) {
        const Dictionary domain = domains.next();
        const std::string found = differences(domain);
        ASSERT_EQ(found, "") << "domain " << i << " of seed " << GetParam().seed << ":\n"
                             << DomainText(domain);
    }
}

TEST_P(RandomDomainTest, NumbersThatAreNoneAreSurvivedAndDrawn) {
    RandomDomain domains(GetParam().seed + 1000);
    for (int i = 0; i < 30; ++i) {
        device_.writeDomain(domains.next(true));
        for (const auto& shown : cells_) {
            shown->realod();
            shown->setFrame(CGRectMake(0, 0, 320, 160));
            for (CGFloat later : {0.0, 0.2, 0.6}) {
                MainQueue::main().runUntil(clock_, clock_.nanoseconds() + int64_t(later * 1e9));
                auto picture = RenderServer::render(*shown->layer(), CGFloat(clock_.nanoseconds()) / 1e9, 1);
                ASSERT_TRUE(picture);
                ASSERT_EQ(picture->width(), 320);
            }
            EXPECT_TRUE(shown->badgeView() && shown->closeBoxView() && shown->newDotView());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Devices, RandomDomainTest,
    testing::Values(
        Surroundings{1, 1, {24, 24}, {12, 12}, {8, 8}, {24, 24}, {45, 45}, 0xFF808080, {320, 44}},
        Surroundings{2, 2, {24, 24}, {12, 12}, {8, 8}, {24, 24}, {45, 45}, 0xFF808080, {320, 44}},
        Surroundings{3, 1, {30, 20}, {12, 8}, {10, 6}, {26, 22}, {50, 40}, 0xFF2040C0, {375, 90}},
        Surroundings{4, 2, {30, 20}, {12, 8}, {10, 6}, {26, 22}, {50, 40}, 0xFF2040C0, {375, 90}},
        Surroundings{5, 1, {20, 30}, {8, 14}, {6, 12}, {22, 28}, {40, 52}, 0xFFFFFFFF, {768, 60}},
        Surroundings{6, 2, {20, 30}, {8, 14}, {6, 12}, {22, 28}, {40, 52}, 0xFFFFFFFF, {768, 60}},
        Surroundings{7, 1, {40, 22}, {20, 20}, {14, 8}, {30, 30}, {45, 45}, 0xFF000000, {414, 130}},
        Surroundings{8, 2, {22, 40}, {20, 20}, {8, 14}, {30, 30}, {45, 45}, 0xFF00C000, {414, 130}},
        Surroundings{9, 1, {60, 60}, {30, 10}, {20, 20}, {60, 60}, {90, 90}, 0xFFC08040, {200, 200}},
        Surroundings{10, 2, {28, 24}, {10, 12}, {8, 10}, {24, 20}, {46, 48}, 0xFF103050, {320, 44}}));

} // namespace
} // namespace tallyforge::test
