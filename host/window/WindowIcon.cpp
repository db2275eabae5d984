#include "window/WindowIcon.h"

#include "coregraphics/Canvas.h"

#include <QIcon>
#include <QImage>
#include <QPixmap>

namespace tallyforge {

namespace {

QImage drawIcon(int side) {
    CGImage bitmap(side, side);
    {
        const auto canvas = Graphics::current()->makeCanvas(bitmap);
        canvas->setTransform(CGAffineTransformMakeScale(side / 64.0, side / 64.0));
        CGPath tile;
        tile.addRoundedRect({{3, 9}, {52, 52}}, 12, 12);
        canvas->fillPath(tile, {0.22, 0.25, 0.32, 1});
        // Three sliders.
        const double ends[] = {38, 22, 32};
        for (int row = 0; row < 3; ++row) {
            const double y = 24 + 11 * row;
            CGPath track, knob;
            track.addRoundedRect({{12, y - 1.5}, {34, 3}}, 1.5, 1.5);
            knob.addEllipseInRect({{ends[row] - 4, y - 4}, {8, 8}});
            canvas->fillPath(track, {1, 1, 1, 0.45});
            canvas->fillPath(knob, {1, 1, 1, 1});
        }
        CGPath rim, badge;
        rim.addEllipseInRect({{38, 0}, {26, 26}});
        badge.addEllipseInRect({{40, 2}, {22, 22}});
        canvas->fillPath(rim, {1, 1, 1, 1});
        canvas->fillPath(badge, {1, 0.23, 0.19, 1});
    }
    return QImage(reinterpret_cast<const uchar*>(bitmap.row(0)), side, side, qsizetype(side) * 4,
                  QImage::Format_ARGB32_Premultiplied)
        .copy();
}

} // namespace

QIcon WindowIcon() {
    QIcon icon;
    for (const int side : {32, 64, 128})
        icon.addPixmap(QPixmap::fromImage(drawIcon(side)));
    return icon;
}

} // namespace tallyforge
