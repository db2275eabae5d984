#include "Drawing.h"

#include <numbers>
#include <random>
#include <vector>

namespace tallyforge {
namespace {

/// A picture with smooth parts, sharp edges, fine detail and transparency.
CGImageRef testPicture(int width, int height) {
    auto image = std::make_shared<CGImage>(width, height);
    std::mt19937 random(7);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double alpha = std::hypot(x - width / 2.0, y - height / 2.0) < width * 0.45 ? 1 : 0.3;
            double red = double(x) / width;
            double green = (x / 3 + y / 5) % 2 == 0 ? 0.9 : 0.1;
            double blue = double(random() % 256) / 255;
            image->row(y)[x] = PixelFromColor({red, green, blue, alpha});
        }
    }
    return image;
}

/// The mean of the image over the area that each result pixel covers, in floating point.
std::vector<double> exactAverage(const CGImage& image, double left, double top, double width, double height,
                                 int resultWidth, int resultHeight) {
    std::vector<double> result(size_t(resultWidth) * size_t(resultHeight) * 4);
    double sx = image.width() / width;
    double sy = image.height() / height;
    for (int j = 0; j < resultHeight; ++j) {
        for (int i = 0; i < resultWidth; ++i) {
            double x0 = std::max(0.0, (i - left) * sx);
            double x1 = std::min(double(image.width()), (i + 1 - left) * sx);
            double y0 = std::max(0.0, (j - top) * sy);
            double y1 = std::min(double(image.height()), (j + 1 - top) * sy);
            for (int y = int(y0); y < y1; ++y) {
                for (int x = int(x0); x < x1; ++x) {
                    double part = (std::min(x1, x + 1.0) - std::max(x0, double(x))) *
                                  (std::min(y1, y + 1.0) - std::max(y0, double(y))) / (sx * sy);
                    for (int c = 0; c < 4; ++c)
                        result[(size_t(j) * size_t(resultWidth) + size_t(i)) * 4 + size_t(c)] +=
                            part * (image.pixel(x, y) >> (8 * c) & 255);
                }
            }
        }
    }
    return result;
}

double signalToNoise(const CGImage& image, const std::vector<double>& exact) {
    double squares = 0;
    for (size_t i = 0; i < image.pixels().size(); ++i) {
        for (size_t c = 0; c < 4; ++c) {
            double difference = (image.pixels()[i] >> (8 * c) & 255) - exact[i * 4 + c];
            squares += difference * difference;
        }
    }
    return 10 * std::log10(255 * 255 / (squares / double(exact.size()) + 1e-12));
}

TEST(CanvasImage, ShrinkingAverages) {
    struct Case {
        int from, to;
    };
    for (Case c : {Case{180, 120}, Case{180, 60}, Case{120, 90}, Case{97, 31}, Case{64, 1}, Case{100, 99}}) {
        CGImageRef picture = testPicture(c.from, c.from);
        CGImage result = painted(c.to, c.to, [&](Canvas& canvas) {
            canvas.drawImage(picture, {{0, 0}, {double(c.to), double(c.to)}});
        });
        EXPECT_GE(signalToNoise(result, exactAverage(*picture, 0, 0, c.to, c.to, c.to, c.to)), 50)
            << c.from << " to " << c.to;
        EXPECT_TRUE(validPremultiplied(result));
    }
}

TEST(CanvasImage, ShrinkingAveragesAtEveryScreenScale) {
    CGImageRef picture = testPicture(180, 180);
    for (double scale : {1.0, 1.5, 2.0, 3.0}) {
        int side = int(60 * scale);
        CGImage result = painted(side, side, [&](Canvas& canvas) {
            canvas.setTransform(CGAffineTransformMakeScale(scale, scale));
            canvas.drawImage(picture, {{0, 0}, {60, 60}});
        });
        EXPECT_GE(signalToNoise(result, exactAverage(*picture, 0, 0, side, side, side, side)), 50) << scale;
    }
}

TEST(CanvasImage, ShrinkingIntoAFractionalRectFadesTheEdges) {
    CGImageRef picture = testPicture(90, 60);
    CGImage result = painted(40, 40, [&](Canvas& canvas) {
        canvas.drawImage(picture, {{3.3, 4.75}, {31.4, 20.5}});
    });
    EXPECT_GE(signalToNoise(result, exactAverage(*picture, 3.3, 4.75, 31.4, 20.5, 40, 40)), 50);
    EXPECT_EQ(result.pixel(2, 10), 0U);
}

// What is large is scaled by bands of rows; none of their edges shows, turned over or not.
TEST(CanvasImage, LargePicturesHaveNoSeams) {
    const CGImageRef picture = testPicture(700, 610);
    const auto exact = exactAverage(*picture, 10.3, 4.75, 540.4, 470.5, 560, 480);
    const CGImage result = painted(560, 480, [&](Canvas& canvas) {
        canvas.drawImage(picture, {{10.3, 4.75}, {540.4, 470.5}});
    });
    const CGImage turnedOver = painted(560, 480, [&](Canvas& canvas) {
        canvas.setTransform({-1, 0, 0, -1, 560, 480});
        canvas.drawImage(picture, {{9.3, 4.75}, {540.4, 470.5}});
    });
    const auto exactTurned = exactAverage(*picture, 9.3, 4.75, 540.4, 470.5, 560, 480);
    for (int y = 0; y < 480; ++y) {
        for (int x = 0; x < 560; ++x) {
            for (int c = 0; c < 4; ++c) {
                const size_t i = (size_t(y) * 560 + size_t(x)) * 4 + size_t(c);
                ASSERT_NEAR(int(result.pixel(x, y) >> (8 * c) & 255), exact[i], 1.5) << x << " " << y;
                ASSERT_NEAR(int(turnedOver.pixel(559 - x, 479 - y) >> (8 * c) & 255), exactTurned[i], 1.5)
                    << x << " " << y;
            }
        }
    }
}

TEST(CanvasImage, EvenColourStaysExactlyWhatItIs) {
    auto even = std::make_shared<CGImage>(57, 33);
    std::fill_n(even->row(0), 57 * 33, 0xc0805020U);
    for (int side : {1, 7, 20, 33, 57, 90}) {
        CGImage result = painted(side, side, [&](Canvas& c) {
            c.drawImage(even, {{0, 0}, {double(side), double(side)}});
        });
        for (uint32_t pixel : result.pixels())
            ASSERT_EQ(pixel, 0xc0805020U) << side;
    }
}

TEST(CanvasImage, OneToOneIsACopy) {
    CGImageRef picture = testPicture(40, 30);
    CGImage result = painted(60, 60, [&](Canvas& c) { c.drawImage(picture, {{7, 9}, {40, 30}}); });
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 60; ++x) {
            bool inside = x >= 7 && x < 47 && y >= 9 && y < 39;
            ASSERT_EQ(result.pixel(x, y), inside ? picture->pixel(x - 7, y - 9) : 0U);
        }
    }
}

TEST(CanvasImage, OneToOnePartlyOutsideIsACopyOfThePartInside) {
    CGImageRef picture = testPicture(40, 30);
    CGImage result = painted(20, 20, [&](Canvas& c) { c.drawImage(picture, {{-15, -12}, {40, 30}}); });
    for (int y = 0; y < 18; ++y) {
        for (int x = 0; x < 20; ++x)
            ASSERT_EQ(result.pixel(x, y), picture->pixel(x + 15, y + 12));
    }
    EXPECT_EQ(result.pixel(0, 18), 0U);
}

TEST(CanvasImage, NegativeSizeIsTheSameAreaNotMirrored) {
    CGImageRef picture = testPicture(40, 30);
    CGImage result = painted(60, 60, [&](Canvas& c) { c.drawImage(picture, {{47, 39}, {-40, -30}}); });
    CGImage plain = painted(60, 60, [&](Canvas& c) { c.drawImage(picture, {{7, 9}, {40, 30}}); });
    EXPECT_EQ(result.pixels(), plain.pixels());
}

TEST(CanvasImage, EnlargingInterpolates) {
    auto two = std::make_shared<CGImage>(2, 1);
    two->row(0)[0] = 0xff000000;
    two->row(0)[1] = 0xffffffff;
    CGImage result = painted(8, 4, [&](Canvas& c) { c.drawImage(two, {{0, 0}, {8, 4}}); });
    // Middles of the two source pixels lie at 2 and 6; result pixel i has its middle at i + 0.5.
    for (int x = 0; x < 8; ++x) {
        double expected = std::clamp((x + 0.5 - 2) / 4, 0.0, 1.0) * 255;
        for (int y = 0; y < 4; ++y)
            EXPECT_NEAR(redOf(result.pixel(x, y)), expected, 1) << x;
    }
    EXPECT_EQ(alphaOf(result.pixel(0, 0)), 255);
    EXPECT_EQ(alphaOf(result.pixel(7, 3)), 255);
}

TEST(CanvasImage, QuarterAndHalfTurnsAreExactCopies) {
    CGImageRef picture = testPicture(20, 20);
    struct Case {
        CGAffineTransform turn;
        std::function<uint32_t(int, int)> expected;
    };
    const Case cases[] = {
        {{0, 1, -1, 0, 20, 0}, [&](int x, int y) { return picture->pixel(y, 19 - x); }},
        {{-1, 0, 0, -1, 20, 20}, [&](int x, int y) { return picture->pixel(19 - x, 19 - y); }},
        {{-1, 0, 0, 1, 20, 0}, [&](int x, int y) { return picture->pixel(19 - x, y); }},
    };
    for (const Case& one : cases) {
        CGImage result = painted(20, 20, [&](Canvas& c) {
            c.setTransform(one.turn);
            c.drawImage(picture, {{0, 0}, {20, 20}});
        });
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 20; ++x)
                ASSERT_EQ(result.pixel(x, y), one.expected(x, y)) << x << "," << y;
        }
    }
    // The same by sine and cosine, which are not quite 0 and 1.
    CGImage turned = painted(20, 20, [&](Canvas& c) {
        c.setTransform(CGAffineTransformRotate(CGAffineTransformMakeTranslation(20, 20), std::numbers::pi));
        c.drawImage(picture, {{0, 0}, {20, 20}});
    });
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 20; ++x)
            ASSERT_LE(largestDifference(turned.pixel(x, y), picture->pixel(19 - x, 19 - y)), 1);
    }
}

TEST(CanvasImage, TurnedAndShrunkKeepsAreaAndMeanColour) {
    CGImageRef picture = testPicture(120, 120);
    double mean[4] = {};
    for (uint32_t pixel : picture->pixels()) {
        for (int c = 0; c < 4; ++c)
            mean[c] += (pixel >> (8 * c) & 255) / double(120 * 120);
    }
    CGImage result = painted(80, 80, [&](Canvas& c) {
        c.setTransform(CGAffineTransformRotate(CGAffineTransformMakeTranslation(40, 40), 0.6));
        c.drawImage(picture, {{-20, -20}, {40, 40}});
    });
    double sum[4] = {};
    for (uint32_t pixel : result.pixels()) {
        for (int c = 0; c < 4; ++c)
            sum[c] += (pixel >> (8 * c) & 255);
    }
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(sum[c] / 1600, mean[c], 2) << c;
    EXPECT_TRUE(validPremultiplied(result));
}

TEST(CanvasImage, TurnedEdgesAreAntialiased) {
    auto even = std::make_shared<CGImage>(10, 10);
    std::fill_n(even->row(0), 100, 0xff000000U);
    CGImage result = painted(60, 60, [&](Canvas& c) {
        c.setTransform(CGAffineTransformRotate(CGAffineTransformMakeTranslation(30, 30), 0.3));
        c.drawImage(even, {{-15, -15}, {30, 30}});
    });
    EXPECT_NEAR(inkArea(result), 900, 4);
    bool partial = std::any_of(result.pixels().begin(), result.pixels().end(),
                               [](uint32_t p) { return alphaOf(p) > 40 && alphaOf(p) < 215; });
    EXPECT_TRUE(partial);
}

TEST(CanvasImage, AlphaAndSourceAtop) {
    auto even = std::make_shared<CGImage>(10, 10);
    std::fill_n(even->row(0), 100, 0xffff0000U);
    CGImage faded = painted(10, 10, [&](Canvas& c) { c.drawImage(even, {{0, 0}, {10, 10}}, 0.5); });
    EXPECT_LE(largestDifference(faded.pixel(5, 5), 0x80800000U), 1);
    CGImage atop = painted(10, 10, [&](Canvas& c) {
        c.fillRect({{0, 0}, {5, 10}}, kBlue);
        c.drawImage(even, {{0, 0}, {10, 10}}, 1, kCGBlendModeSourceAtop);
    });
    EXPECT_EQ(atop.pixel(2, 5), 0xffff0000U);
    EXPECT_EQ(atop.pixel(7, 5), 0U);
}

TEST(CanvasImage, NothingToDrawDrawsNothing) {
    CGImageRef picture = testPicture(10, 10);
    CGImage result = painted(20, 20, [&](Canvas& c) {
        c.drawImage(nullptr, {{0, 0}, {10, 10}});
        c.drawImage(std::make_shared<CGImage>(0, 0), {{0, 0}, {10, 10}});
        c.drawImage(picture, {{0, 0}, {0, 10}});
        c.drawImage(picture, {{0, 0}, {10, 10}}, 0);
        c.drawImage(picture, {{std::nan(""), 0}, {10, 10}});
        c.drawImage(picture, {{0, 0}, {10, 10}}, std::nan(""));
        c.drawImage(picture, {{50, 50}, {10, 10}});
    });
    EXPECT_TRUE(blank(result));
}

TEST(CanvasImage, SinglePixelFillsWhateverItIsStretchedOver) {
    auto one = std::make_shared<CGImage>(1, 1);
    one->row(0)[0] = 0xff204060;
    for (double angle : {0.0, 0.7}) {
        CGImage result = painted(30, 30, [&](Canvas& c) {
            c.setTransform(CGAffineTransformRotate(CGAffineTransformMakeTranslation(15, 15), angle));
            c.drawImage(one, {{-1e6, -1e6}, {2e6, 2e6}});
        });
        for (uint32_t pixel : result.pixels())
            ASSERT_EQ(pixel, 0xff204060U);
    }
}

// Pictures that come again are kept as they were drawn. They are the same then, and never another image's.
TEST(CanvasImage, WhatIsDrawnAgainIsTheSame) {
    CGImageRef picture = testPicture(30, 20);
    const CGRect places[] = {{{3.3, 4.7}, {30, 20}}, {{2, 3}, {17.6, 31.2}}, {{5.25, 1}, {60, 40}}};
    for (const CGRect& place : places) {
        for (CGFloat sign : {1.0, -1.0}) {
            const auto draw = [&](CGFloat further) {
                return painted(90, 90, [&](Canvas& c) {
                    c.setTransform({sign, 0, 0, 1, sign < 0 ? 80 + further : further, 0});
                    c.drawImage(picture, place);
                });
            };
            const CGImage first = draw(0);
            EXPECT_FALSE(blank(first));
            for (int again = 0; again < 3; ++again)
                EXPECT_EQ(draw(0).pixels(), first.pixels());
            // By whole pixels further along it is the same again.
            const CGImage moved = draw(4);
            for (int y = 0; y < 90; ++y)
                ASSERT_TRUE(std::equal(first.row(y), first.row(y) + 86, moved.row(y) + 4));
        }
    }
}

TEST(CanvasImage, AnotherImageInTheSameMemoryIsAnotherImage) {
    CGImage memory(8, 8);
    const auto fillAndDraw = [&memory](uint32_t pixel) {
        std::fill_n(memory.row(0), 64, pixel);
        const std::shared_ptr<const CGImage> image(&memory, [](const CGImage*) {});
        CGImage result(1, 1);
        for (int again = 0; again < 3; ++again)
            result = painted(20, 20, [&](Canvas& c) { c.drawImage(image, {{1.5, 1.5}, {14, 14}}); });
        return result.pixel(8, 8);
    };
    EXPECT_EQ(fillAndDraw(0xff102030), 0xff102030U);
    EXPECT_EQ(fillAndDraw(0xff405060), 0xff405060U);
}

// A picture's clear sides are left out. Were they not quite clear, it would look the same to a step.
TEST(CanvasImage, ClearSidesMakeNoDifference) {
    const auto withSides = [](uint32_t side) {
        auto image = std::make_shared<CGImage>(40, 34);
        for (int y = 0; y < 34; ++y) {
            for (int x = 0; x < 40; ++x) {
                const bool inside = x >= 5 && x < 33 && y >= 7 && y < 30;
                image->row(y)[x] = inside ? 0xff0000ffU | unsigned(x * 6) << 16 | unsigned(y * 7) << 8 : side;
            }
        }
        return image;
    };
    const CGImageRef clear = withSides(0), hardly = withSides(0x01000000);
    const CGAffineTransform places[] = {{1, 0, 0, 1, 3, 2},
                                        {1, 0, 0, 1, 3.4, 2.7},
                                        {1.7, 0, 0, 2.2, 1, 1},
                                        {0.6, 0, 0, 0.5, 3, 2},
                                        {-1, 0, 0, -1, 60.5, 50},
                                        CGAffineTransformRotate({1, 0, 0, 1, 50, 10}, 0.7),
                                        CGAffineTransformRotate({1.6, 0, 0, 1.3, 60, 90}, -2.1),
                                        CGAffineTransformRotate({0.5, 0, 0, 0.4, 40, 30}, 3)};
    for (const CGAffineTransform& place : places) {
        const auto draw = [&place](const CGImageRef& image) {
            return painted(100, 100, [&](Canvas& c) {
                c.setTransform(place);
                c.drawImage(image, {{0, 0}, {40, 34}});
            });
        };
        const CGImage one = draw(clear), other = draw(hardly);
        EXPECT_LE(largestDifference(one, other), 2) << place.a << ' ' << place.b;
        EXPECT_GT(inkArea(one), 28 * 23 * std::fabs(place.a * place.d - place.b * place.c) * 0.97);
    }
}

// As scrolling leaves it. It covers what it would on whole pixels, also when it comes again and is kept, and
// nothing else.
TEST(CanvasImage, APictureAllButOnWholePixelsStaysInItsPlace) {
    const CGImageRef image = testPicture(24, 24);
    for (const double off : {0.0, 2e-5, -2e-5, 1e-6, -1e-6, 1e-8, -1e-8}) {
        for (const CGAffineTransform& place : {CGAffineTransform{1, 0, 0, 1, 10 + off, 20 + off},
                                               CGAffineTransform{1, 0, 0, -1, 10 + off, 44 + off},
                                               CGAffineTransform{-1, 0, 0, 1, 34 - off, 20 - off},
                                               CGAffineTransform{-1, 0, 0, -1, 34 + off, 44 - off}}) {
            for (int again = 0; again < 4; ++again) {
                const CGImage result = painted(50, 60, [&](Canvas& c) {
                    c.setTransform(place);
                    c.drawImage(image, {{0, 0}, {24, 24}});
                });
                for (int y = 0; y < 60; ++y) {
                    for (int x = 0; x < 50; ++x) {
                        const bool inside = x >= 10 && x < 34 && y >= 20 && y < 44;
                        const int column = place.a < 0 ? 33 - x : x - 10, row = place.d < 0 ? 43 - y : y - 20;
                        ASSERT_EQ(result.pixel(x, y), inside ? image->pixel(column, row) : 0U)
                            << x << ' ' << y << ' ' << off << ' ' << place.a << ' ' << place.d << ' '
                            << again;
                    }
                }
            }
        }
    }
}

} // namespace
} // namespace tallyforge
