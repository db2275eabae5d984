#include "RowIcons.h"

#include "Canvas.h"
#include "Palette.h"
#include "Shapes.h"

namespace tallyforge {

using namespace palette;

namespace {

constexpr double plateRadius = 6.5;

void ground(Canvas& canvas, QRgb colour) {
    canvas.fill(rounded(QRectF(0, 0, rowIconSide, rowIconSide), plateRadius),
                vertical(0, rowIconSide, lighter(QColor(colour), 0.16), QColor(colour)));
}

QPainterPath appAt(QRectF rect) {
    return rounded(rect, rect.width() * 0.24);
}

/// An app with a round badge at its corner; a gap in the plate's colour keeps the two apart.
QImage drawBadgeRow(int scale) {
    Canvas canvas(qRound(rowIconSide * scale), rowIconSide);
    ground(canvas, brick);
    const QPointF corner(19.5, 9.5);
    QPainterPath app = appAt(QRectF(6, 9, 14, 14)).subtracted(fineCircle(corner, 6.1));
    canvas.fill(app, faded(QColor(cream), 0.82));
    canvas.fill(fineCircle(corner, 4.6), QColor(cream));
    return canvas.finish();
}

/// A disc with a cross cut out of it.
QImage drawCloseBoxRow(int scale) {
    Canvas canvas(qRound(rowIconSide * scale), rowIconSide);
    ground(canvas, slate);
    const QPointF centre(rowIconSide / 2, rowIconSide / 2);
    canvas.fill(fineCircle(centre, 8.6), QColor(cream));
    QPainterPath bars = segment(centre + QPointF(-3.1, -3.1), centre + QPointF(3.1, 3.1));
    bars.addPath(segment(centre + QPointF(-3.1, 3.1), centre + QPointF(3.1, -3.1)));
    canvas.stroke(bars, QColor(slate), 2.1);
    return canvas.finish();
}

/// An app and below it its name with a dot before it.
QImage drawNewDotRow(int scale) {
    Canvas canvas(qRound(rowIconSide * scale), rowIconSide);
    ground(canvas, indigo);
    canvas.fill(appAt(QRectF(8.5, 5, 12, 12)), faded(QColor(cream), 0.82));
    canvas.fill(fineCircle(QPointF(7.6, 21.8), 2.4), QColor(sky));
    canvas.fill(rounded(QRectF(11.8, 20.6, 11.6, 2.4), 1.2), QColor(cream));
    return canvas.finish();
}

/// Three colours that overlap.
QImage drawThemesRow(int scale) {
    Canvas canvas(qRound(rowIconSide * scale), rowIconSide);
    ground(canvas, orchid);
    canvas.fill(fineCircle(QPointF(14.5, 10.6), 5.2), faded(QColor(butter), 0.92));
    canvas.fill(fineCircle(QPointF(10.9, 17), 5.2), faded(QColor(sky), 0.86));
    canvas.fill(fineCircle(QPointF(18.1, 17), 5.2), faded(QColor(cream), 0.86));
    return canvas.finish();
}

/// Four apps, one of which looks different.
QImage drawAppsRow(int scale) {
    Canvas canvas(qRound(rowIconSide * scale), rowIconSide);
    ground(canvas, fern);
    for (QPointF corner : {QPointF(6, 6), QPointF(15.5, 6), QPointF(6, 15.5)}) {
        canvas.fill(appAt(QRectF(corner, QSizeF(7.5, 7.5))), QColor(cream));
    }
    canvas.fill(appAt(QRectF(15.5, 15.5, 7.5, 7.5)), QColor(butter));
    return canvas.finish();
}

} // namespace

const std::vector<RowIcon>& rowIcons() {
    static const std::vector<RowIcon> icons{{"icon_badge", drawBadgeRow},
                                            {"icon_closebox", drawCloseBoxRow},
                                            {"icon_newdot", drawNewDotRow},
                                            {"icon_themes", drawThemesRow},
                                            {"icon_apps", drawAppsRow}};
    return icons;
}

} // namespace tallyforge
