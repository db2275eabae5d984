#include "Icons.h"
#include "Palette.h"
#include "Shapes.h"

namespace tallyforge {

using namespace palette;

/// The tide under its moon.
void drawTide(Canvas& canvas) {
    canvas.ground(mix(sky, cream, 0.4), mix(sky, teal, 0.25));
    const QPointF moon(39.5, 20);
    canvas.fill(circle(moon, 20), radiance(moon, 20, faded(QColor(255, 255, 255), 0.6)));
    canvas.fill(circle(moon, 8.6), vertical(11, 29, QColor(255, 255, 255), butter));

    struct Wave {
        double level, amplitude, length, phase;
        QRgb top, bottom;
    };
    for (Wave wave : {Wave{31, 2.6, 34, 8, 0xff6fcbd0, teal}, Wave{38.5, 3, 40, 32, teal, 0xff167e86},
                      Wave{47, 2.8, 36, 12, 0xff167e86, pine}}) {
        const QPainterPath water = sea(60, 64, wave.level, wave.amplitude, wave.length, wave.phase);
        canvas.shadow(water, -0.4, 1.8, 0.12);
        canvas.fill(water, vertical(wave.level - 3, wave.level + 14, wave.top, wave.bottom));
    }
}

/// A road that winds to the horizon.
void drawRoad(Canvas& canvas) {
    canvas.ground(butter, coral);
    canvas.fill(circle(QPointF(41, 23), 9), vertical(14, 32, cream, mix(cream, butter, 0.6)));
    const QPainterPath far = sea(60, 64, 29, 3.6, 76, 10);
    canvas.fill(far, vertical(25, 44, sage, fern));
    const QPainterPath nearby = sea(60, 64, 35, 3.4, 84, 48);
    canvas.shadow(nearby, -0.4, 2, 0.18);
    canvas.fill(nearby, vertical(31, 60, fern, pine));

    QPainterPath road(QPointF(37.4, 32.6));
    road.cubicTo(33, 36, 17, 35.5, 17, 41);
    road.cubicTo(17, 48, 36, 48, 32, 62);
    road.lineTo(51, 62);
    road.cubicTo(53, 43, 24, 45, 24, 40.4);
    road.cubicTo(24, 37, 36.5, 36.6, 39.6, 32.4);
    road.closeSubpath();
    canvas.shadow(road, 0.3, 0.9, 0.2);
    canvas.fill(road, vertical(32, 60, cream, sand));
}

/// Quiet weather: a cloud before a crescent.
void drawWeather(Canvas& canvas) {
    canvas.ground(mix(iris, rose, 0.55), mix(indigo, slate, 0.45));
    const QPainterPath crescent =
        circle(QPointF(30, 23.5), 13.5).subtracted(circle(QPointF(36.5, 18.5), 11.8));
    canvas.fill(circle(QPointF(30, 25), 25), radiance(QPointF(30, 25), 25, faded(butter, 0.4)));
    canvas.fill(crescent, vertical(10, 38, butter, apricot));
    for (QPointF star : {QPointF(40, 17.5), QPointF(47.5, 26)}) {
        canvas.fill(starburst(star, 4, 3.4, 1.1), QColor(cream));
    }
    QPainterPath cloud;
    cloud.setFillRule(Qt::WindingFill);
    cloud.addPath(rounded(QRectF(10, 36, 40, 13), 6.5));
    cloud.addPath(circle(QPointF(23.5, 35.5), 7.5));
    cloud.addPath(circle(QPointF(35, 33), 9.5));
    cloud = cloud.simplified();
    canvas.shadow(cloud, 1, 2.4, 0.26);
    canvas.fill(cloud, vertical(24, 49, QColor(255, 255, 255), mix(cream, iris, 0.24)));
}

/// A page of a star chart.
void drawStars(Canvas& canvas) {
    canvas.ground(mix(ink, indigo, 0.75), ink);
    for (double radius : {13.0, 21.0}) {
        canvas.stroke(circle(QPointF(30, 30), radius), faded(sky, 0.26), canvas.line(0.8));
    }
    canvas.stroke(segment(QPointF(9, 30), QPointF(51, 30)), faded(sky, 0.2), canvas.line(0.8));
    canvas.stroke(segment(QPointF(30, 9), QPointF(30, 51)), faded(sky, 0.2), canvas.line(0.8));

    const QPointF stars[] = {QPointF(13.5, 21), QPointF(24, 16.5), QPointF(32, 26),
                             QPointF(44.5, 24), QPointF(40, 42),   QPointF(25.5, 39)};
    QPainterPath figure(stars[0]);
    for (int next : {1, 2, 3, 4, 5, 2}) {
        figure.lineTo(stars[next]);
    }
    canvas.stroke(figure, faded(cream, 0.62), 1.3);
    for (QPointF star : {stars[0], stars[1], stars[3], stars[5]}) {
        canvas.fill(circle(star, 2.3), QColor(cream));
    }
    canvas.fill(circle(stars[4], 3.1), QColor(coral));
    canvas.fill(circle(stars[2], 12), radiance(stars[2], 12, faded(butter, 0.55)));
    canvas.fill(starburst(stars[2], 4, 8, 2.3), QColor(butter));
}

} // namespace tallyforge
