#include "window/ScreenPicture.h"

#include <QPainter>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

const QColor kAroundTheScreen(0x1C, 0x1C, 0x1E);
constexpr int kLargestSide = 8192;

int pixels(CGFloat length) {
    return int(std::clamp<CGFloat>(std::round(length), 1, kLargestSide));
}

} // namespace

ScreenPicture::ScreenPicture(QWindow& window, const CGSize& points)
    : window_(window), points_(points), store_(&window) {}

bool ScreenPicture::fit() {
    const QSize size = window_.size();
    const CGFloat density = window_.devicePixelRatio();
    if (size_ == size && density_ == density) return false;
    size_ = size;
    density_ = density;
    const CGFloat width = std::max(1.0, size.width() * density),
                  height = std::max(1.0, size.height() * density);
    scale_ = std::min(width / points_.width, height / points_.height);
    const int across = pixels(points_.width * scale_), down = pixels(points_.height * scale_);
    place_ = QRect(int((width - across) / 2), int((height - down) / 2), across, down);
    if (!bitmap_ || bitmap_->width() != across || bitmap_->height() != down) {
        bitmap_ = std::make_unique<CGImage>(across, down);
        updater_.forget();
    }
    store_.resize(size);
    showAll_ = true;
    return true;
}

CGPoint ScreenPicture::pointAt(const QPointF& inWindow) const {
    return {(inWindow.x() * density_ - place_.x()) / scale_, (inWindow.y() * density_ - place_.y()) / scale_};
}

QRectF ScreenPicture::rectInWindow(const CGRect& points) const {
    return {(points.origin.x * scale_ + place_.x()) / density_,
            (points.origin.y * scale_ + place_.y()) / density_, points.size.width * scale_ / density_,
            points.size.height * scale_ / density_};
}

std::vector<CGRect> ScreenPicture::paint(const CALayer& screen, CGFloat seconds) {
    return updater_.update(screen, seconds, {scale_, 0, 0, scale_, 0, 0}, *bitmap_);
}

void ScreenPicture::show(const std::vector<CGRect>& areas) {
    // The display counts in the window's own units, which need not be whole pixels.
    QRegion region;
    if (showAll_) {
        region = QRect(QPoint(), size_);
    } else {
        for (const CGRect& area : areas) {
            const QRectF units((area.origin.x + place_.x()) / density_,
                               (area.origin.y + place_.y()) / density_, area.size.width / density_,
                               area.size.height / density_);
            region += units.toAlignedRect();
        }
    }
    if (region.isEmpty()) return;

    store_.beginPaint(region);
    {
        const QImage screen(reinterpret_cast<const uchar*>(bitmap_->row(0)), bitmap_->width(),
                            bitmap_->height(), qsizetype(bitmap_->width()) * 4, QImage::Format_RGB32);
        QPainter painter(store_.paintDevice());
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        if (density_ != 1) painter.scale(1 / density_, 1 / density_);
        for (const QRect& units : region) {
            const QRect target = QRectF(units.x() * density_, units.y() * density_, units.width() * density_,
                                        units.height() * density_)
                                     .toAlignedRect();
            const QRect seen = target & place_;
            if (seen != target) painter.fillRect(target, kAroundTheScreen);
            if (!seen.isEmpty())
                painter.drawImage(seen.topLeft(), screen, seen.translated(-place_.topLeft()));
        }
    }
    store_.endPaint();
    store_.flush(region);
    showAll_ = false;
}

} // namespace tallyforge
