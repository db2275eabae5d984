#pragma once

#include "coregraphics/Canvas.h"
#include "rastergraphics/Coverage.h"

#include <array>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace tallyforge {

/// A shaped line of text at size 1: one unit is the font's size, the baseline starts at (0, 0), y downwards.
struct TextLine {
    struct Picture { ///< a glyph that is a coloured picture, not an outline
        CGImageRef image;
        CGRect frame;
    };
    CGFloat width = 0;
    CGFloat ascent = 0;
    CGFloat descent = 0;
    CGPath outline;
    CGRect reach; ///< of the outline
    std::vector<Picture> pictures;
};

/// Shapes text and keeps what was shaped and painted lately, since the same few labels come again in every
/// frame.
class TextEngine {
  public:
    /// Nothing when this program runs a toolkit that cannot do text.
    std::shared_ptr<const TextLine> line(std::string_view utf8, int weight);
    /// Paints the outline from the pixels kept of it. False when it is too large to be kept. What is turned
    /// is kept only when it comes again, since it is mostly turning; the pixels are the same either way.
    bool drawCached(const std::shared_ptr<const TextLine>& line, const CGAffineTransform& lineToPixels,
                    const PixelRect& clip, CoverageSink& sink);

  private:
    struct LineKey {
        int weight;
        std::string text;
        // NOLINTNEXTLINE(modernize-use-nullptr): the 0 of comparisons
        auto operator<=>(const LineKey&) const = default;
    };
    struct Line {
        LineKey key;
        std::shared_ptr<const TextLine> line;
    };
    struct PaintedKey {
        std::shared_ptr<const TextLine> line;
        CGAffineTransform place; ///< with translations below one pixel
        bool operator==(const PaintedKey&) const = default;
    };
    struct PaintedHash {
        size_t operator()(const PaintedKey& key) const;
    };
    struct Painted {
        PaintedKey key;
        PixelRect area;
        std::vector<uint8_t> coverage;
    };

    std::mutex mutex_;
    std::list<Line> lines_; ///< the latest used first
    std::map<LineKey, std::list<Line>::iterator> lineByKey_;
    std::list<Painted> painted_; ///< the latest used first
    std::unordered_map<PaintedKey, std::list<Painted>::iterator, PaintedHash> paintedByKey_;
    size_t paintedBytes_ = 0;
    std::array<PaintedKey, 16> turnedOnce_; ///< seen, not kept; the oldest is replaced
    size_t nextTurned_ = 0;
};

} // namespace tallyforge
