#include "Drawing.h"

#include <numbers>
#include <string>
#include <vector>

namespace tallyforge {
namespace {

TextMeasure measure(std::string_view text, CGFloat size = 17, int weight = 400) {
    return testGraphics().measureText(text, {size, weight});
}

struct Ink {
    int left = 1 << 20, top = 1 << 20, right = -1, bottom = -1;
    double x = 0, y = 0, sum = 0; ///< centre of mass, amount
};

Ink inkOf(const CGImage& image) {
    Ink ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            double alpha = alphaOf(image.pixel(x, y)) / 255.0;
            if (alpha == 0) continue;
            ink.left = std::min(ink.left, x);
            ink.right = std::max(ink.right, x + 1);
            ink.top = std::min(ink.top, y);
            ink.bottom = std::max(ink.bottom, y + 1);
            ink.sum += alpha;
            ink.x += alpha * (x + 0.5);
            ink.y += alpha * (y + 0.5);
        }
    }
    ink.x /= ink.sum;
    ink.y /= ink.sum;
    return ink;
}

CGImage drawn(std::string_view text, double x, double y, double scale = 1, CGFloat size = 17, int width = 300,
              int height = 120) {
    return painted(width, height, [&](Canvas& c) {
        c.setTransform(CGAffineTransformMakeScale(scale, scale));
        c.drawText(text, {size, 400}, {x, y}, kBlack);
    });
}

TEST(TextMeasure, WidthsAddUp) {
    // Equal digits do not kern.
    EXPECT_NEAR(measure("0000").width, 4 * measure("0").width, 0.05);
    EXPECT_NEAR(measure("nnnn").width, 2 * measure("nn").width, 0.05);
    EXPECT_NEAR(measure("n n").width, 2 * measure("n").width + measure(" ").width, 0.05);
}

TEST(TextMeasure, SpacesAtTheEndsCount) {
    EXPECT_GT(measure(" ").width, 2);
    EXPECT_NEAR(measure("n  ").width, measure("n").width + 2 * measure(" ").width, 0.05);
    EXPECT_NEAR(measure("  n").width, measure("n  ").width, 0.05);
}

TEST(TextMeasure, IsInProportionToTheSize) {
    TextMeasure at10 = measure("Settings and more", 10);
    for (double size : {0.5, 12.0, 17.0, 40.0, 333.0}) {
        TextMeasure other = measure("Settings and more", size);
        EXPECT_NEAR(other.width, at10.width * size / 10, 1e-6 * other.width);
        EXPECT_NEAR(other.ascent, at10.ascent * size / 10, 1e-6 * other.ascent);
        EXPECT_NEAR(other.descent, at10.descent * size / 10, 1e-6 * other.ascent);
    }
}

TEST(TextMeasure, IsNotRoundedToPixels) {
    double width = measure("iiiiiiiiii", 11).width;
    EXPECT_NEAR(width, 11 * measure("iiiiiiiiii", 1).width, 1e-6);
    EXPECT_GT(std::fabs(width - std::round(width)) +
                  std::fabs(measure("i", 11).width - std::round(measure("i", 11).width)),
              0.01);
}

TEST(TextMeasure, EmptyTextHasHeightOnly) {
    TextMeasure m = measure("");
    EXPECT_EQ(m.width, 0);
    EXPECT_GT(m.ascent, m.descent);
    EXPECT_GT(m.descent, 0);
    EXPECT_EQ(m.lineHeight(), measure("Ag").lineHeight());
}

TEST(TextMeasure, SizesThatAreNoneMeasureNothing) {
    for (double size : {0.0, -3.0, std::nan(""), HUGE_VAL})
        EXPECT_EQ(measure("text", size).width, 0);
}

TEST(TextMeasure, SemiboldIsWider) {
    EXPECT_GT(measure("Settings", 17, 600).width, measure("Settings").width);
}

TEST(TextMeasure, CombiningMarkTakesNoRoom) {
    EXPECT_NEAR(measure("e\xCC\x81").width, measure("e").width, 0.1);
}

TEST(TextMeasure, ControlCharactersAreSpaces) {
    EXPECT_NEAR(measure("a\nb\tc").width, measure("a b c").width, 1e-9);
}

TEST(TextMeasure, AnyBytesAndAnyLengthAreSafe) {
    EXPECT_GT(measure("a\xFF\xC3(\xE2\x82").width, measure("a").width);
    EXPECT_GT(measure(std::string("a\0b", 3)).width, measure("a").width);
    std::string large(200000, 'x');
    EXPECT_GE(measure(large).width, 4096 * measure("x").width * 0.99);
    EXPECT_GT(measure("\xF0\x9F\x98\x80").width, 0);
    EXPECT_GT(measure("\xF3\xB0\x80\x80").width, 0); // no font has it
}

TEST(TextDraw, InkLiesInsideTheMeasuredBox) {
    for (double scale : {1.0, 1.5, 2.0, 3.0}) {
        TextMeasure m = measure("Mgjpq AV");
        Ink ink = inkOf(drawn("Mgjpq AV", 5, 25, scale));
        EXPECT_GE(ink.left, std::floor((5 - 0.5) * scale));
        EXPECT_LE(ink.right, std::ceil((5 + m.width + 0.5) * scale));
        EXPECT_GE(ink.top, std::floor((25 - m.ascent) * scale));
        EXPECT_LE(ink.bottom, std::ceil((25 + m.descent) * scale));
        EXPECT_GT(ink.right - ink.left, m.width * scale * 0.9);
    }
}

TEST(TextDraw, SymmetricTextIsCentredAsMeasured) {
    for (const char* text : {"o", "oo", "OHO", "8"}) {
        double width = measure(text).width;
        Ink ink = inkOf(drawn(text, 50 - width / 2, 40));
        EXPECT_NEAR(ink.x, 50, 0.4) << text;
    }
}

TEST(TextDraw, LooksTheSameAtEveryScale) {
    Ink at1 = inkOf(drawn("Sample", 10, 30, 1));
    for (double scale : {1.5, 2.0, 3.0}) {
        Ink ink = inkOf(drawn("Sample", 10, 30, scale));
        EXPECT_NEAR(ink.x / scale, at1.x, 0.02);
        EXPECT_NEAR(ink.y / scale, at1.y, 0.02);
        EXPECT_NEAR(ink.sum / (scale * scale), at1.sum, 0.01 * at1.sum);
    }
}

TEST(TextDraw, IsPlacedBetweenPixels) {
    Ink base = inkOf(drawn("Sample", 10, 30));
    for (double shift : {0.25, 0.5, 0.8}) {
        Ink moved = inkOf(drawn("Sample", 10 + shift, 30 + shift));
        EXPECT_NEAR(moved.x, base.x + shift, 0.02);
        EXPECT_NEAR(moved.y, base.y + shift, 0.02);
    }
}

TEST(TextDraw, TurnsWithTheTransform) {
    Ink straight = inkOf(drawn("Sample", 0, 30));
    double angle = std::numbers::pi / 2;
    CGImage image = painted(120, 300, [&](Canvas& c) {
        c.setTransform(CGAffineTransformRotate(CGAffineTransformMakeTranslation(100, 10), angle));
        c.drawText("Sample", {17, 400}, {0, 30}, kBlack);
    });
    Ink turned = inkOf(image);
    // x' = 100 - y, y' = 10 + x.
    EXPECT_NEAR(turned.x, 100 - straight.y, 0.05);
    EXPECT_NEAR(turned.y, 10 + straight.x, 0.05);
    EXPECT_NEAR(turned.sum, straight.sum, 0.01 * straight.sum);
}

TEST(TextDraw, DrawingAgainGivesTheSamePixels) {
    CGImage first = drawn("Repeated", 10.3, 30.7);
    CGImage second = drawn("Repeated", 10.3, 30.7);
    EXPECT_EQ(first.pixels(), second.pixels());
    // Kept pixels are no different from fresh ones: another font size in between, larger than what is kept.
    CGImage large = painted(1200, 700, [](Canvas& c) {
        c.drawText("Repeated", {500, 400}, {0, 600}, kBlack);
    });
    EXPECT_GT(inkArea(large), 10000);
}

// Turned text is kept only when it comes again, and whatever part of it is painted.
TEST(TextDraw, TurnedTextIsTheSameEveryTime) {
    const auto draw = [](const CGRect& clip) {
        return painted(120, 120, [&clip](Canvas& c) {
            c.clipToRect(clip);
            c.setTransform(CGAffineTransformRotate(CGAffineTransformMakeTranslation(20.37, 15.81), 0.6));
            c.drawText("Turned", {24, 400}, {0, 30}, kBlack);
        });
    };
    const CGRect all{{0, 0}, {120, 120}}, part{{30, 40}, {25, 19}};
    const CGImage partFirst = draw(part);
    const CGImage first = draw(all);
    EXPECT_FALSE(blank(first));
    EXPECT_EQ(draw(all).pixels(), first.pixels());
    EXPECT_EQ(draw(all).pixels(), first.pixels());
    for (int y = 40; y < 59; ++y)
        EXPECT_TRUE(std::equal(first.row(y) + 30, first.row(y) + 55, partFirst.row(y) + 30));
}

TEST(TextDraw, TakesColourAlphaAndClip) {
    CGImage red = painted(100, 40, [](Canvas& c) { c.drawText("HHHH", {30, 700}, {2, 32}, kRed, 0.5); });
    int strongest = 0;
    for (uint32_t pixel : red.pixels()) {
        EXPECT_EQ(redOf(pixel), alphaOf(pixel));
        EXPECT_EQ(blueOf(pixel), 0);
        strongest = std::max(strongest, alphaOf(pixel));
    }
    EXPECT_NEAR(strongest, 128, 1);
    CGImage clipped = painted(100, 40, [](Canvas& c) {
        c.clipToRect({{0, 0}, {20, 40}});
        c.drawText("HHHH", {30, 700}, {2, 32}, kBlack);
    });
    EXPECT_LE(inkOf(clipped).right, 20);
    EXPECT_GT(inkOf(clipped).sum, 50);
}

TEST(TextDraw, OtherScriptsAndMissingGlyphsLeaveInk) {
    for (const char* text : {"\xD9\x85\xD8\xB1\xD8\xAD\xD8\xA8\xD8\xA7", // Arabic
                             "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D",         // Hebrew
                             "\xD0\x9F\xD1\x80", "\xE6\x97\xA5\xE6\x9C\xAC", "\xF0\x9F\x98\x80"}) {
        Ink ink = inkOf(drawn(text, 10, 40));
        EXPECT_GT(ink.sum, 5) << text;
        EXPECT_GE(ink.left, 8) << text;
        EXPECT_LE(ink.right, 10 + measure(text).width + 2) << text;
    }
}

TEST(TextDraw, ArabicLettersJoin) {
    // Joined, two letters are narrower than twice the letter standing alone.
    EXPECT_LT(measure("\xD8\xA8\xD8\xA8").width, 2 * measure("\xD8\xA8").width - 1);
}

using Boundaries = std::vector<size_t>;

TEST(CharacterBoundaries, AreWhereCharactersEnd) {
    Graphics& g = testGraphics();
    EXPECT_EQ(g.characterBoundaries(""), (Boundaries{0}));
    EXPECT_EQ(g.characterBoundaries("abc"), (Boundaries{0, 1, 2, 3}));
    EXPECT_EQ(g.characterBoundaries("a\xC3\xA9z"), (Boundaries{0, 1, 3, 4}));
    EXPECT_EQ(g.characterBoundaries("e\xCC\x81x"), (Boundaries{0, 3, 4}));        // letter and accent
    EXPECT_EQ(g.characterBoundaries("\xF0\x9F\x98\x80!"), (Boundaries{0, 4, 5})); // outside the first plane
    // A thumb with a skin tone, then a flag made of two letters.
    EXPECT_EQ(g.characterBoundaries("\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD"), (Boundaries{0, 8}));
    EXPECT_EQ(g.characterBoundaries("\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA"), (Boundaries{0, 8}));
    EXPECT_EQ(g.characterBoundaries("\r\n"), (Boundaries{0, 2}));
}

TEST(CharacterBoundaries, BrokenBytesAreCharactersOfTheirOwn) {
    Graphics& g = testGraphics();
    EXPECT_EQ(g.characterBoundaries("a\xFF\xFE"), (Boundaries{0, 1, 2, 3}));
    EXPECT_EQ(g.characterBoundaries("\xC3(x"), (Boundaries{0, 1, 2, 3}));
    EXPECT_EQ(g.characterBoundaries("ab\xE2\x82"), (Boundaries{0, 1, 2, 3, 4}));
    EXPECT_EQ(g.characterBoundaries("\xEF\xBF\xBDx"),
              (Boundaries{0, 3, 4})); // the replacement character itself
}

} // namespace
} // namespace tallyforge
