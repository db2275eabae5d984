#include "rastergraphics/RasterGraphics.h"

#include "rastergraphics/ImageFiles.h"
#include "rastergraphics/LeakChecker.h"
#include "rastergraphics/PictureCache.h"
#include "rastergraphics/RasterCanvas.h"
#include "rastergraphics/TextEngine.h"
#include "rastergraphics/TextShaping.h"

#include <cmath>

namespace tallyforge {

namespace {

class RasterGraphics final : public Graphics {
  public:
    std::unique_ptr<Canvas> makeCanvas(CGImage& bitmap) override {
        return std::make_unique<RasterCanvas>(bitmap, *text_, *pictures_);
    }
    CGImageRef decodeImage(std::span<const uint8_t> bytes) override { return DecodeImageFile(bytes); }
    std::vector<uint8_t> encodePNG(const CGImage& image) override { return EncodePNGFile(image); }
    TextMeasure measureText(std::string_view utf8, const FontFace& font) override {
        if (!std::isfinite(font.size) || font.size <= 0) return {};
        std::shared_ptr<const TextLine> line = text_->line(utf8, font.weight);
        if (!line) return {};
        return {line->width * font.size, line->ascent * font.size, line->descent * font.size};
    }
    std::vector<size_t> characterBoundaries(std::string_view utf8) override {
        return FindCharacterBoundaries(utf8);
    }

  private:
    std::unique_ptr<TextEngine> text_ = std::make_unique<TextEngine>();
    std::unique_ptr<PictureCache> pictures_ = std::make_unique<PictureCache>();
};

} // namespace

std::unique_ptr<Graphics> MakeRasterGraphics() {
    PrepareLeakChecker();
    return std::make_unique<RasterGraphics>();
}

} // namespace tallyforge
