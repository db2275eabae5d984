#pragma once

#include "coregraphics/Canvas.h"

namespace tallyforge::fuzz {

/// Accepts everything and paints nothing.
class BlankCanvas final : public Canvas {
  public:
    void save() override { saved_.push_back(transform_); }
    void restore() override {
        if (saved_.empty()) return;
        transform_ = saved_.back();
        saved_.pop_back();
    }
    void setTransform(const CGAffineTransform& userToPixels) override { transform_ = userToPixels; }
    CGAffineTransform transform() const override { return transform_; }
    void clipToRect(const CGRect&) override {}
    void clipToPath(const CGPath&) override {}
    void fillRect(const CGRect&, const CGColor&, CGFloat, CGBlendMode) override {}
    void fillPath(const CGPath&, const CGColor&, CGFloat, CGBlendMode) override {}
    void strokePath(const CGPath&, const CGColor&, CGFloat, bool) override {}
    void drawImage(const CGImageRef&, const CGRect&, CGFloat, CGBlendMode) override {}
    void drawText(std::string_view, const FontFace&, const CGPoint&, const CGColor&, CGFloat) override {}
    void beginGroup(const CGRect&, CGFloat) override {}
    void endGroup() override {}
    void flush() override {}

  private:
    CGAffineTransform transform_ = CGAffineTransformIdentity;
    std::vector<CGAffineTransform> saved_;
};

/// Drawing for targets that are not about pixels: every picture is a small one, every byte of a text is as
/// wide as the next.
class PlainGraphics final : public Graphics {
  public:
    std::unique_ptr<Canvas> makeCanvas(CGImage&) override { return std::make_unique<BlankCanvas>(); }
    CGImageRef decodeImage(std::span<const uint8_t> bytes) override {
        return bytes.empty() ? nullptr : std::make_shared<CGImage>(4, 4);
    }
    std::vector<uint8_t> encodePNG(const CGImage&) override { return {0x89, 'P', 'N', 'G'}; }
    TextMeasure measureText(std::string_view utf8, const FontFace& font) override {
        return {static_cast<CGFloat>(utf8.size()) * font.size / 2, font.size, font.size / 4};
    }
    std::vector<size_t> characterBoundaries(std::string_view utf8) override {
        std::vector<size_t> places;
        for (size_t at = 0; at < utf8.size(); ++at)
            if ((static_cast<unsigned char>(utf8[at]) & 0xC0) != 0x80 || at == 0) places.push_back(at);
        places.push_back(utf8.size());
        return places;
    }
};

} // namespace tallyforge::fuzz
