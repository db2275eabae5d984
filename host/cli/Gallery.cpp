#include "cli/Gallery.h"

#include "cli/GalleryTile.h"
#include "cli/ProgressBar.h"
#include "cli/Report.h"
#include "cli/ThemeChoice.h"
#include "corefoundation/CFPreferences.h"
#include "coregraphics/Canvas.h"
#include "device/HostFile.h"
#include "foundation/Clock.h"
#include "foundation/Dispatch.h"
#include "uikit/UIDevice.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kMargin = 28; // points, around the sheet
constexpr CGFloat kGap = 24;    // between tiles
constexpr double kMostPixels = 4096;
constexpr double kLeastScale = 0.25;
constexpr CGFloat kWantedShape = 1.5; // width to height

/// Where the tiles stand on the sheet.
struct Sheet {
    size_t columns = 1;
    size_t rows = 1;

    CGSize size() const {
        const CGSize tile = GalleryTileSize();
        const auto across = static_cast<CGFloat>(columns), down = static_cast<CGFloat>(rows);
        return {2 * kMargin + across * tile.width + (across - 1) * kGap,
                2 * kMargin + down * tile.height + (down - 1) * kGap};
    }
    CGPoint origin(size_t tile) const {
        const CGSize size = GalleryTileSize();
        const size_t row = tile / columns, column = tile % columns;
        return {kMargin + static_cast<CGFloat>(column) * (size.width + kGap),
                kMargin + static_cast<CGFloat>(row) * (size.height + kGap)};
    }
};

// About as wide as wanted, with the last row as full as can be.
Sheet SheetFor(size_t tiles) {
    const CGSize tile = GalleryTileSize();
    const double ideal =
        std::sqrt(static_cast<double>(tiles) * kWantedShape * (tile.height + kGap) / (tile.width + kGap));
    const auto most = std::min(tiles, static_cast<size_t>(std::ceil(ideal)) + 1);
    Sheet best;
    size_t fewestFree = SIZE_MAX;
    for (size_t columns = most; columns > 0 && columns + 3 > most; --columns) {
        const size_t rows = (tiles + columns - 1) / columns;
        const size_t free = rows * columns - tiles;
        if (free >= fewestFree) continue;
        fewestFree = free;
        best = {columns, rows};
    }
    return best;
}

/// The clock stands still; what the themes set is forgotten in the end and reaches no file.
class GalleryStage {
  public:
    explicit GalleryStage(double scale) {
        MainQueue::main().setClock(&clock_);
        UIScreen::mainScreen().setScale(scale);
    }
    ~GalleryStage() {
        CFPreferencesForgetAll();
        MainQueue::main().clear();
        MainQueue::main().setClock(nullptr);
    }
    GalleryStage(const GalleryStage&) = delete;
    GalleryStage& operator=(const GalleryStage&) = delete;

  private:
    VirtualClock clock_;
};

void Place(const CGImage& tile, CGImage& sheet, const CGPoint& origin, double scale) {
    const int left = static_cast<int>(std::lround(origin.x * scale));
    const int top = static_cast<int>(std::lround(origin.y * scale));
    const int width = std::min(tile.width(), sheet.width() - left);
    const int height = std::min(tile.height(), sheet.height() - top);
    for (int y = 0; y < height; ++y)
        std::copy_n(tile.row(y), width, sheet.row(top + y) + left);
}

Result<CGImage> DrawSheet(const std::vector<Theme>& themes, const Sheet& sheet, double scale) {
    const CGSize size = sheet.size();
    CGImage picture(static_cast<int>(std::ceil(size.width * scale)),
                    static_cast<int>(std::ceil(size.height * scale)));
    for (int y = 0; y < picture.height(); ++y)
        std::fill_n(picture.row(y), picture.width(), kGalleryPaper);
    const GalleryStage stage(scale);
    ProgressBar progress("theme gallery");
    for (size_t i = 0; i < themes.size(); ++i) {
        const auto theme = ReadTheme(themes[i].path);
        if (!theme) return Error{themes[i].path + ": " + theme.reason()};
        SetTheme(*theme);
        const auto tile = DrawGalleryTile(themes[i].name, scale);
        if (!tile) return Error{"a tile cannot be drawn"};
        Place(*tile, picture, sheet.origin(i), scale);
        progress.show(static_cast<double>(i + 1) / static_cast<double>(themes.size()));
    }
    return picture;
}

} // namespace

int RunGallery(const Command& command) {
    const auto listing = UsersThemes();
    if (!listing) return CouldNot(command.name, listing.reason());
    const int unread = ComplainOfUnread(command, listing->unread);
    const std::vector<Theme>& themes = listing->themes;
    if (themes.empty() && unread != kDone) return unread;
    if (themes.empty())
        return CouldNot(command.name,
                        "there are no themes; 'tallyforge theme restore' brings the default ones");
    const Sheet sheet = SheetFor(themes.size());
    const CGSize size = sheet.size();
    const double scale = std::min(command.scale, (kMostPixels - 1) / std::max(size.width, size.height));
    if (scale < kLeastScale)
        return CouldNot(command.name, std::to_string(themes.size()) + " themes do not fit into one picture");
    const auto picture = DrawSheet(themes, sheet, scale);
    if (!picture) return CouldNot(command.name, picture.reason());
    const auto written = WriteHostFile(command.output, Graphics::current()->encodePNG(*picture));
    return written ? unread : CouldNot(command.name, written.reason());
}

} // namespace tallyforge
