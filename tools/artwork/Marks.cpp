#include "Marks.h"

#include "Canvas.h"
#include "Palette.h"
#include "Shapes.h"

namespace tallyforge {

namespace {

QBrush plateShade() {
    return vertical(0, plateSide, QColor(255, 255, 255), QColor(222, 222, 226));
}

} // namespace

QImage drawPlate(int scale) {
    Canvas canvas(qRound(plateSide * scale), plateSide);
    canvas.fill(markCircle(), plateShade());
    return canvas.finish();
}

QImage drawIconPlate(int scale) {
    Canvas canvas(qRound(plateSide * scale), plateSide);
    canvas.fill(markIcon(), plateShade());
    return canvas.finish();
}

QImage drawCross(int scale) {
    // One outline for both bars, so that the crossing is not blended twice.
    constexpr double near = 2.1;
    constexpr double far = crossSide - near;
    Canvas canvas(qRound(crossSide * scale), crossSide);
    QPainterPath bars = segment(QPointF(near, near), QPointF(far, far));
    bars.addPath(segment(QPointF(near, far), QPointF(far, near)));
    canvas.stroke(bars, vertical(0, crossSide, QColor(255, 255, 255), QColor(236, 236, 240)), 2);
    return canvas.finish();
}

QImage drawDot(int scale) {
    const double radius = dotSide / 2;
    const QPainterPath disc = fineCircle(QPointF(radius, radius), radius);
    Canvas canvas(qRound(dotSide * scale), dotSide);
    canvas.fill(disc, vertical(0, dotSide, QColor(246, 246, 250), QColor(170, 170, 180)));
    // Light on the dot must not thicken its rim.
    canvas.painter().setCompositionMode(QPainter::CompositionMode_SourceAtop);
    canvas.fill(disc, radiance(QPointF(radius, radius * 0.45), radius * 1.1,
                               palette::faded(QColor(255, 255, 255), 0.85)));
    return canvas.finish();
}

} // namespace tallyforge
