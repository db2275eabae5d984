#include "Icons.h"
#include "Palette.h"
#include "Shapes.h"

#include <cmath>

namespace tallyforge {

using namespace palette;

/// Bands woven over and under, from edge to edge.
void drawLoom(Canvas& canvas) {
    canvas.ground(mix(cream, sand, 0.5), sand);
    const double width = canvas.snap(12);
    const double starts[] = {canvas.snap(4), canvas.snap(24), canvas.snap(44)};
    const QRgb weft[] = {coral, apricot, coral};
    const QRgb warp[] = {indigo, teal, indigo};
    auto band = [&](int i, bool across, double from, double length) {
        const double start = starts[i];
        const QRectF rect = across ? QRectF(from, start, length, width) : QRectF(start, from, width, length);
        const QRgb colour = across ? weft[i] : warp[i];
        const QColor light = lighter(colour, 0.13);
        const QColor dark = darker(colour, 0.1);
        const QPainterPath path = rectangle(rect);
        canvas.shadow(path, 0.4, 1.8, 0.42);
        canvas.fill(path, across ? vertical(start, start + width, light, dark)
                                 : horizontal(start, start + width, light, dark));
        const double seam = canvas.line(0.9);
        const QColor thread = faded(cream, 0.38);
        for (double offset : {canvas.snap(1.8), width - canvas.snap(1.8) - seam}) {
            canvas.fill(rectangle(across ? QRectF(from, start + offset, length, seam)
                                         : QRectF(start + offset, from, seam, length)),
                        thread);
        }
    };
    for (int i = 0; i < 3; ++i) {
        band(i, true, -6, 72);
    }
    for (int i = 0; i < 3; ++i) {
        band(i, false, -6, 72);
    }
    // Where the weft runs on top it is laid again: over the crossing as far as the warp's own shadow reaches,
    // and its shadow falls on the warp alone.
    const double gap = starts[1] - starts[0] - width;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if ((row + column) % 2 != 0) continue;
            QPainterPath window =
                rectangle(QRectF(starts[column] - gap / 2, starts[row], width + gap, width));
            window.addPath(rectangle(QRectF(starts[column], starts[row] - gap / 2, width, width + gap)));
            window.setFillRule(Qt::WindingFill);
            canvas.painter().save();
            canvas.painter().setClipPath(window);
            band(row, true, -6, 72);
            canvas.painter().restore();
        }
    }
}

/// A pear that looks out of a sewn pocket.
void drawPear(Canvas& canvas) {
    canvas.ground(mix(sage, butter, 0.35), fern);
    QPainterPath pear(QPointF(30, 14));
    pear.cubicTo(35.5, 14, 36.4, 19, 37.6, 23.5);
    pear.cubicTo(39, 28.5, 44, 31, 44, 38.5);
    pear.cubicTo(44, 47, 38, 52, 30, 52);
    pear.cubicTo(22, 52, 16, 47, 16, 38.5);
    pear.cubicTo(16, 31, 21, 28.5, 22.4, 23.5);
    pear.cubicTo(23.6, 19, 24.5, 14, 30, 14);
    QPainterPath stem(QPointF(30, 15.5));
    stem.quadTo(30, 11, 32, 8);
    canvas.stroke(stem, QColor(plum), 2.4);
    canvas.shadow(pear, 1, 2.4, 0.26);
    canvas.fill(pear, vertical(14, 46, butter, apricot));
    canvas.stroke(segment(QPointF(26.6, 20.5), QPointF(24.6, 27.5)), faded(cream, 0.55), 2.6);
    QPainterPath blade(QPointF(31, 14));
    blade.cubicTo(32, 7.5, 39, 6.5, 45, 9.5);
    blade.cubicTo(42.5, 15.5, 36.5, 17.5, 31, 14);
    canvas.fill(blade, vertical(7, 17, fern, pine));

    const double hem = canvas.snap(37.5);
    const QPainterPath pocket = leaf(QRectF(9.5, hem, 41, 30), 4, {true, true, true, true});
    canvas.shadow(pocket, -0.4, 2, 0.24);
    canvas.fill(pocket, vertical(hem, 60, indigo, darker(indigo, 0.35)));
    canvas.fill(rectangle(QRectF(9.5, hem, 41, canvas.snap(4.4))), lighter(indigo, 0.16));
    QPen thread(QColor(apricot), canvas.line(1.1), Qt::CustomDashLine, Qt::FlatCap);
    thread.setDashPattern({2.6, 1.8});
    canvas.painter().strokePath(segment(QPointF(12, hem + 6.8), QPointF(48.5, hem + 6.8)), thread);
    canvas.painter().strokePath(segment(QPointF(12.6, hem + 9.4), QPointF(12.6, 60)), thread);
    canvas.painter().strokePath(segment(QPointF(47.4, hem + 9.4), QPointF(47.4, 60)), thread);
}

/// A lit paper lantern.
void drawLantern(Canvas& canvas) {
    canvas.ground(mix(plum, indigo, 0.55), darker(plum, 0.65));
    canvas.fill(circle(QPointF(30, 29), 31), radiance(QPointF(30, 29), 31, faded(apricot, 0.8)));
    canvas.stroke(segment(QPointF(30, -2), QPointF(30, 12)), QColor(sand), 1.3, Qt::FlatCap);

    QPainterPath body;
    const QRectF bounds(12.5, 13.5, 35, 31);
    body.addRoundedRect(bounds, 17.5, 14.5);
    canvas.fill(body, vertical(13, 45, coral, brick));
    canvas.painter().save();
    canvas.painter().setClipPath(body);
    canvas.fill(rectangle(bounds), radiance(QPointF(30, 30), 19, faded(butter, 0.95)));
    // The ribs bow with the paper: flat at the middle, round at the ends.
    for (int rib = -2; rib <= 2; ++rib) {
        const double y = 29 + rib * 5.4;
        QPainterPath bow(QPointF(11, y - rib * 0.7));
        bow.quadTo(30, y + rib * 1.6, 49, y - rib * 0.7);
        canvas.stroke(bow, faded(brick, 0.62), 1.1, Qt::FlatCap);
    }
    canvas.painter().restore();
    for (double y : {11.5, 43.0}) {
        canvas.fill(rounded(canvas.snap(QRectF(23, y, 14, 3.6)), 1.2), QColor(ink));
    }
    canvas.stroke(segment(QPointF(30, 46.5), QPointF(30, 49.5)), QColor(sand), 1.3, Qt::FlatCap);
    canvas.fill(polygon({QPointF(28.4, 49), QPointF(31.6, 49), QPointF(32.6, 55), QPointF(27.4, 55)}),
                vertical(49, 55, butter, apricot));
}

/// A glazed pastry with a ribbon of icing.
void drawEclair(Canvas& canvas) {
    canvas.ground(mix(rose, cream, 0.3), mix(rose, coral, 0.5));
    QPainter& painter = canvas.painter();
    painter.save();
    painter.translate(30, 30);
    painter.rotate(-32);
    const QPainterPath dough = rounded(QRectF(-22, -8, 44, 19), 9.5);
    canvas.shadow(dough, 1.6, 2.6, 0.3);
    canvas.fill(dough, vertical(-8, 11, butter, mix(apricot, brick, 0.25)));
    canvas.fill(rounded(QRectF(-20, 2.6, 40, 3), 1.5), QColor(cream));

    // The glaze runs down unevenly.
    QPainterPath glaze(QPointF(-22, 0));
    glaze.cubicTo(-22, -12.5, -16, -12, -11, -12);
    glaze.lineTo(11, -12);
    glaze.cubicTo(16, -12, 22, -12.5, 22, 0);
    const double drips[][3] = {{15, 4.5, 18}, {8, 1, 11.5},     {1, 5.2, 4.5},
                               {-6, 1, -2.5}, {-13, 4.8, -9.5}, {-22, 0, -18.5}};
    double depth = 0;
    for (const auto& drip : drips) {
        glaze.cubicTo(drip[2], depth, drip[2], drip[1], drip[0], drip[1]);
        depth = drip[1];
    }
    glaze.closeSubpath();
    canvas.shadow(glaze, 0.5, 0.9, 0.22);
    canvas.fill(glaze, vertical(-12, 5, mix(plum, orchid, 0.35), darker(plum, 0.2)));
    canvas.fill(rounded(QRectF(-16, -10.4, 24, 2), 1), faded(cream, 0.22));
    painter.setClipPath(glaze);
    for (int i = -1; i <= 3; ++i) {
        const double x = -12 + i * 8.5;
        canvas.stroke(segment(QPointF(x, -14), QPointF(x - 6, 8)), QColor(rose), 1.9);
    }
    for (QPointF crumb : {QPointF(-13.4, -4.2), QPointF(-4.6, -5.6), QPointF(3.4, -3.4), QPointF(12.2, -6)}) {
        canvas.fill(circle(crumb, 1.3), QColor(sage));
    }
    painter.restore();
}

/// Three cubes in a corner.
void drawCubes(Canvas& canvas) {
    canvas.ground(mix(sky, cream, 0.25), mix(sky, iris, 0.6));
    constexpr double edge = 11.2;
    const double across = edge * std::sqrt(3.0) / 2;
    // The point is the corner that looks at us.
    auto cube = [&](QPointF at, QRgb colour) {
        const QPointF up(0, -edge);
        const QPointF left(-across, -edge / 2);
        const QPointF right(across, -edge / 2);
        canvas.fill(polygon({at, at + left, at + left + right, at + right}), lighter(colour, 0.38));
        canvas.fill(polygon({at, at + right, at + right - up, at - up}), darker(colour, 0.28));
        canvas.fill(polygon({at, at + left, at + left - up, at - up}), QColor(colour));
    };
    const QPointF top(30, 21);
    const QPointF left = top + QPointF(-across, edge * 1.5);
    const QPointF right = top + QPointF(across, edge * 1.5);
    for (QPointF corner : {left, right, top}) {
        const QPointF down(0, edge);
        canvas.shadow(polygon({corner - down, corner + QPointF(across, -edge / 2),
                               corner + QPointF(across, edge / 2), corner + down,
                               corner + QPointF(-across, edge / 2), corner + QPointF(-across, -edge / 2)}),
                      1.4, 2.4, 0.26);
    }
    cube(left, coral);
    cube(right, teal);
    cube(top, apricot);
}

} // namespace tallyforge
