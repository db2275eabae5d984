#include "Icons.h"
#include "Palette.h"
#include "Shapes.h"

namespace tallyforge {

using namespace palette;

/// A ruled page with a ribbon, and the pencil across it.
void drawLedger(Canvas& canvas) {
    canvas.ground(sand, mix(sand, apricot, 0.6));
    const QRectF sheet = canvas.snap(QRectF(12, 9, 33, 42));
    const QPainterPath page = rounded(sheet, 3);
    canvas.shadow(page, 1.4, 2.4, 0.28);
    canvas.fill(page, vertical(sheet.top(), sheet.bottom(), QColor(255, 255, 255), cream));
    for (double y : {19.0, 26.0, 33.0, 40.0}) {
        const double thickness = canvas.line(1.5);
        canvas.fill(rectangle(QRectF(canvas.snap(17), canvas.snap(y), canvas.snap(23), thickness)),
                    faded(slate, 0.42));
    }
    const double left = canvas.snap(35);
    const double right = canvas.snap(40);
    const QPainterPath ribbon =
        polygon({QPointF(left, sheet.top()), QPointF(right, sheet.top()), QPointF(right, 22),
                 QPointF((left + right) / 2, 19), QPointF(left, 22)});
    canvas.fill(ribbon, vertical(sheet.top(), 22, coral, brick));

    QPainter& painter = canvas.painter();
    painter.save();
    painter.translate(24, 46);
    painter.rotate(-48);
    const QPainterPath pencil =
        polygon({QPointF(0, 0), QPointF(7, -3.4), QPointF(34, -3.4), QPointF(34, 3.4), QPointF(7, 3.4)});
    canvas.shadow(pencil, 1.2, 1.8, 0.3);
    canvas.fill(rectangle(QRectF(7, -3.4, 22, 3.4)), QColor(teal));
    canvas.fill(rectangle(QRectF(7, 0, 22, 3.4)), mix(teal, pine, 0.5));
    canvas.fill(polygon({QPointF(0, 0), QPointF(7, -3.4), QPointF(7, 3.4)}), QColor(butter));
    canvas.fill(polygon({QPointF(0, 0), QPointF(2.6, -1.26), QPointF(2.6, 1.26)}), QColor(ink));
    canvas.fill(rectangle(QRectF(29, -3.4, 2, 6.8)), QColor(cream));
    canvas.fill(leaf(QRectF(31, -3.4, 5, 6.8), 2.2, {true, false, false, true}), QColor(coral));
    painter.restore();
}

/// The terraces of an open quarry, from the turf down to the water.
void drawQuarry(Canvas& canvas) {
    canvas.ground(mix(sky, cream, 0.45), sky);
    struct Terrace {
        double level, edge;
        QRgb colour;
    };
    for (Terrace terrace : {Terrace{18, 22, fern}, Terrace{26, 31, apricot}, Terrace{34.5, 40, coral},
                            Terrace{43, 49.5, plum}}) {
        const double level = canvas.snap(terrace.level);
        const double edge = canvas.snap(terrace.edge);
        QPainterPath step(QPointF(-4, level));
        step.lineTo(edge - 3, level);
        step.quadTo(edge, level, edge + 0.6, level + 3);
        step.lineTo(edge + 4, 64);
        step.lineTo(-4, 64);
        step.closeSubpath();
        canvas.shadow(step, 0.6, 2.2, 0.3);
        canvas.fill(step, horizontal(0, edge, lighter(terrace.colour, 0.16), darker(terrace.colour, 0.06)));
        canvas.painter().save();
        canvas.painter().setClipPath(step);
        canvas.fill(rectangle(QRectF(0, level, edge + 4, canvas.snap(1.4))), faded(cream, 0.32));
        canvas.painter().restore();
    }
    canvas.fill(rectangle(QRectF(0, canvas.snap(52), 60, 8)), vertical(52, 60, teal, pine));
    for (QPointF crown : {QPointF(6.5, 12.5), QPointF(14.5, 14)}) {
        canvas.fill(rectangle(canvas.snap(QRectF(crown.x() - 0.7, crown.y(), 1.4, 18 - crown.y()))),
                    QColor(plum));
        canvas.fill(circle(crown, crown.x() < 10 ? 4.6 : 3.6),
                    vertical(crown.y() - 4, crown.y() + 4, QColor(fern), mix(fern, pine, 0.7)));
    }
    QPainterPath cloud = rounded(QRectF(36, 13, 18, 4.4), 2.2);
    cloud.addPath(rounded(QRectF(41, 9.6, 9, 6), 3));
    cloud.setFillRule(Qt::WindingFill);
    canvas.fill(cloud, faded(QColor(255, 255, 255), 0.85));
}

/// A lighthouse at dusk.
void drawBeacon(Canvas& canvas) {
    canvas.ground(mix(orchid, indigo, 0.5), rose);
    canvas.fill(circle(QPointF(30, 17), 26), radiance(QPointF(30, 17), 26, faded(butter, 0.85)));
    for (double side : {-1.0, 1.0}) {
        const double end = 30 + side * 34;
        canvas.fill(polygon({QPointF(30, 15.5), QPointF(end, 5), QPointF(end, 27), QPointF(30, 18.5)}),
                    horizontal(30, end, faded(cream, 0.85), faded(cream, 0.06)));
    }
    const QPainterPath rock = sea(60, 60, 49.5, 3.2, 62, 30);
    const QPainterPath tower =
        polygon({QPointF(25.2, 22), QPointF(34.8, 22), QPointF(38, 52), QPointF(22, 52)});
    canvas.shadow(tower, 0.8, 1.8, 0.25);
    canvas.painter().save();
    canvas.painter().setClipPath(tower);
    canvas.fill(tower, horizontal(22, 38, QColor(255, 255, 255), sand));
    for (double y : {26.0, 37.0}) {
        canvas.fill(rectangle(canvas.snap(QRectF(20, y, 20, 5.5))), horizontal(22, 38, coral, brick));
    }
    canvas.painter().restore();
    canvas.fill(rectangle(canvas.snap(QRectF(23, 20, 14, 2.4))), QColor(ink));
    canvas.fill(rectangle(canvas.snap(QRectF(26, 13.5, 8, 6.5))), QColor(butter));
    canvas.fill(polygon({QPointF(24.5, canvas.snap(13.5)), QPointF(30, 8), QPointF(35.5, canvas.snap(13.5))}),
                QColor(ink));
    canvas.fill(rock, vertical(46, 60, mix(ink, plum, 0.35), ink));
}

/// A metronome in full swing.
void drawMetronome(Canvas& canvas) {
    canvas.ground(mix(sage, teal, 0.35), mix(fern, pine, 0.6));
    const QPainterPath body =
        polygon({QPointF(24, 10), QPointF(36, 10), QPointF(45.5, 50), QPointF(14.5, 50)});
    canvas.shadow(body, 1.4, 2.4, 0.32);
    const double plinth = canvas.snap(42);
    QPainter& painter = canvas.painter();
    painter.save();
    painter.setClipRect(QRectF(0, 0, iconSide, plinth));
    canvas.fill(body, vertical(10, 50, butter, apricot));
    painter.setClipRect(QRectF(0, plinth, iconSide, iconSide));
    canvas.fill(body, vertical(plinth, 50, coral, brick));
    painter.restore();
    const QPainterPath face =
        polygon({QPointF(26.4, 14.5), QPointF(33.6, 14.5), QPointF(39.3, 39), QPointF(20.7, 39)});
    canvas.fill(face, vertical(14, 39, mix(cream, sand, 0.3), cream));
    for (int i = 0; i < 4; ++i) {
        const double y = canvas.snap(19 + i * 4.5);
        canvas.fill(rectangle(QRectF(28.4, y, 3.2, canvas.line(1))), faded(plum, 0.45));
    }
    painter.save();
    painter.translate(30, 41);
    painter.rotate(24);
    canvas.stroke(segment(QPointF(0, 0), QPointF(0, -33)), QColor(plum), 1.9);
    const QPainterPath weight =
        polygon({QPointF(-4.4, -25), QPointF(4.4, -25), QPointF(3, -17), QPointF(-3, -17)});
    canvas.shadow(weight, 0.6, 1.2, 0.3);
    canvas.fill(weight, horizontal(-4.4, 4.4, orchid, plum));
    painter.restore();
    canvas.fill(circle(QPointF(30, 41), 2.4), QColor(plum));
}

/// A trace on a round screen.
void drawTrace(Canvas& canvas) {
    canvas.ground(slate, darker(slate, 0.65));
    const QPainterPath screen = circle(QPointF(30, 30), 20.5);
    canvas.shadow(screen, 1.2, 2.4, 0.35);
    canvas.fill(screen, vertical(9, 51, lighter(slate, 0.75), lighter(slate, 0.4)));
    const QPainterPath glass = circle(QPointF(30, 30), 17.5);
    canvas.fill(glass, vertical(12, 48, ink, mix(ink, pine, 0.8)));
    canvas.painter().save();
    canvas.painter().setClipPath(glass);
    const double grid = canvas.line(0.6);
    for (double at : {21.0, 30.0, 39.0}) {
        canvas.fill(rectangle(QRectF(canvas.snap(at), 10, grid, 40)), faded(sage, 0.22));
        canvas.fill(rectangle(QRectF(10, canvas.snap(at), 40, grid)), faded(sage, 0.22));
    }
    QPainterPath trace(QPointF(10, 30));
    for (QPointF point : {QPointF(21, 30), QPointF(25, 20.5), QPointF(31.5, 40), QPointF(36, 26.5),
                          QPointF(38.5, 30), QPointF(50, 30)}) {
        trace.lineTo(point);
    }
    canvas.stroke(trace, faded(sage, 0.28), 4.6);
    canvas.stroke(trace, lighter(sage, 0.3), 2);
    canvas.painter().restore();
}

} // namespace tallyforge
