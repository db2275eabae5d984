#include "uikit/UIImage.h"

#include "coregraphics/Canvas.h"
#include "foundation/NSFileManager.h"
#include "uikit/UIDevice.h"
#include "uikit/UIGraphics.h"

#include <algorithm>
#include <array>
#include <map>

namespace tallyforge {

namespace {

constexpr size_t kMostImageBytes = 16u << 20;
constexpr size_t kMostKeptFiles = 256;

struct KeptFile {
    FileIdentity identity;
    UIImage image;
};

std::map<std::string, KeptFile, std::less<>>& KeptFiles() {
    static std::map<std::string, KeptFile, std::less<>> files;
    return files;
}

// Reads one very file, or finds it unchanged since it was read last. A file that is there but is no picture
// gives no image.
UIImage ImageFromFile(const std::string& path, const FileIdentity& identity, CGFloat scale) {
    auto& files = KeptFiles();
    if (auto kept = files.find(path); kept != files.end() && kept->second.identity == identity)
        return kept->second.image;

    UIImage image;
    if (Graphics* graphics = Graphics::current()) {
        if (auto bytes = NSFileManager::defaultManager().contentsAtPath(path, kMostImageBytes))
            image = UIImage::imageWithCGImage(graphics->decodeImage(*bytes), scale, UIImageOrientationUp);
    }
    if (files.size() >= kMostKeptFiles) files.clear();
    files.insert_or_assign(path, KeptFile{identity, image});
    return image;
}

// The scales to look for, best first: the screen's own (a screen of 1.5 takes 2), then sharper ones, then
// coarser ones.
std::array<int, 3> ScalesForScreen() {
    CGFloat screen = UIScreen::mainScreen().scale();
    if (screen > 2) return {3, 2, 1};
    return screen > 1 ? std::array{2, 3, 1} : std::array{1, 2, 3};
}

} // namespace

UIImage UIImage::imageWithCGImage(CGImageRef bitmap, CGFloat scale, UIImageOrientation orientation) {
    UIImage image;
    image.bitmap_ = std::move(bitmap);
    image.scale_ = scale > 0 ? scale : 1;
    image.orientation_ = orientation;
    return image;
}

UIImage UIImage::imageWithContentsOfFile(std::string_view path) {
    size_t dot = path.rfind('.');
    size_t slash = path.rfind('/');
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash)) dot = path.size();
    std::string stem(path.substr(0, dot));
    std::string ending(path.substr(dot));
    const char* device = UIDevice::currentDevice().isPad() ? "~ipad" : "~iphone";

    // A path that names a scale itself means that very file.
    std::string_view plain = stem;
    for (std::string_view named : {"~ipad", "~iphone"}) {
        if (plain.ends_with(named)) plain.remove_suffix(named.size());
    }
    if (plain.ends_with("@2x") || plain.ends_with("@3x")) {
        FileIdentity identity = NSFileManager::defaultManager().identityOfFileAtPath(path);
        return identity.exists() ? ImageFromFile(std::string(path), identity, plain[plain.size() - 2] - '0')
                                 : UIImage();
    }
    for (int scale : ScalesForScreen()) {
        std::string scaled = stem;
        if (scale != 1) scaled.append("@").append(std::to_string(scale)).append("x");
        for (const char* suffix : {device, ""}) {
            std::string candidate = scaled;
            candidate.append(suffix).append(ending);
            FileIdentity identity = NSFileManager::defaultManager().identityOfFileAtPath(candidate);
            if (!identity.exists()) continue;
            if (UIImage image = ImageFromFile(candidate, identity, scale)) return image;
        }
    }
    return {};
}

UIImage UIImage::imageWithRenderingMode(UIImageRenderingMode mode) const {
    UIImage image = *this;
    image.renderingMode_ = mode;
    return image;
}

CGSize UIImage::size() const {
    if (!bitmap_) return CGSizeZero;
    return {bitmap_->width() / scale_, bitmap_->height() / scale_};
}

CGImageRef UIImage::uprightBitmap() const {
    if (!bitmap_ || orientation_ == UIImageOrientationUp) return bitmap_;
    auto turned = std::make_shared<tallyforge::CGImage>(bitmap_->width(), bitmap_->height());
    const auto& pixels = bitmap_->pixels();
    std::reverse_copy(pixels.begin(), pixels.end(), turned->row(0));
    return turned;
}

void UIImage::drawInRect(const CGRect& rect) const {
    CGContextDrawImage(UIGraphicsGetCurrentContext(), rect, uprightBitmap());
}

void UIImage::drawAtPoint(const CGPoint& point) const {
    drawInRect({point, size()});
}

void UIImageForgetFiles() {
    KeptFiles().clear();
}

} // namespace tallyforge
