#include "Shapes.h"

#include <cmath>
#include <numbers>

namespace tallyforge {

using std::numbers::pi;

QPainterPath rectangle(QRectF rect) {
    QPainterPath path;
    path.addRect(rect);
    return path;
}

QPainterPath rounded(QRectF rect, double radius) {
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

QPainterPath circle(QPointF centre, double radius) {
    QPainterPath path;
    path.addEllipse(centre, radius, radius);
    return path;
}

QPainterPath fineCircle(QPointF centre, double radius) {
    constexpr int edges = 256;
    QPolygonF outline;
    for (int i = 0; i < edges; ++i) {
        const double angle = (i + 0.5) * 2 * pi / edges;
        outline.append(centre + QPointF(std::cos(angle) * radius, std::sin(angle) * radius));
    }
    QPainterPath path;
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}

QPainterPath polygon(std::initializer_list<QPointF> points) {
    QPainterPath path;
    path.addPolygon(QPolygonF(QList<QPointF>(points)));
    path.closeSubpath();
    return path;
}

QPainterPath segment(QPointF from, QPointF to) {
    QPainterPath path(from);
    path.lineTo(to);
    return path;
}

QPainterPath leaf(QRectF rect, double radius, SharpCorners sharp) {
    const double d = 2 * radius;
    QPainterPath path(QPointF(rect.left() + radius, rect.top()));
    auto corner = [&](bool isSharp, QPointF point, QRectF arc, double start) {
        if (isSharp) {
            path.lineTo(point);
        } else {
            path.arcTo(arc, start, -90);
        }
    };
    corner(sharp.topRight, rect.topRight(), QRectF(rect.right() - d, rect.top(), d, d), 90);
    corner(sharp.bottomRight, rect.bottomRight(), QRectF(rect.right() - d, rect.bottom() - d, d, d), 0);
    corner(sharp.bottomLeft, rect.bottomLeft(), QRectF(rect.left(), rect.bottom() - d, d, d), -90);
    corner(sharp.topLeft, rect.topLeft(), QRectF(rect.left(), rect.top(), d, d), 180);
    path.closeSubpath();
    return path;
}

QPainterPath sea(double width, double height, double level, double amplitude, double length, double phase) {
    QPainterPath path(QPointF(0, height));
    constexpr int steps = 120;
    for (int step = 0; step <= steps; ++step) {
        const double x = width * step / steps;
        path.lineTo(x, level - amplitude * std::cos((x - phase) * 2 * pi / length));
    }
    path.lineTo(width, height);
    path.closeSubpath();
    return path;
}

QPainterPath starburst(QPointF centre, int points, double outer, double inner) {
    QPainterPath path;
    for (int i = 0; i < 2 * points; ++i) {
        const double angle = i * pi / points;
        const double radius = i % 2 == 0 ? outer : inner;
        const QPointF point = centre + QPointF(std::sin(angle) * radius, -std::cos(angle) * radius);
        i == 0 ? path.moveTo(point) : path.lineTo(point);
    }
    path.closeSubpath();
    return path;
}

QPainterPath markCircle() {
    return fineCircle(QPointF(markSide / 2, markSide / 2), markSide / 2);
}

QPainterPath markSquare() {
    return rectangle(QRectF(0, 0, markSide, markSide));
}

QPainterPath markTriangle() {
    return polygon({QPointF(markSide / 2, 0), QPointF(markSide, markSide), QPointF(0, markSide)});
}

QPainterPath markHexagon() {
    const double centre = markSide / 2;
    const double halfWidth = centre * std::sqrt(3.0) / 2;
    return polygon({QPointF(centre, 0), QPointF(centre + halfWidth, centre / 2),
                    QPointF(centre + halfWidth, centre * 1.5), QPointF(centre, markSide),
                    QPointF(centre - halfWidth, centre * 1.5), QPointF(centre - halfWidth, centre / 2)});
}

QPainterPath markStar() {
    // The marks' star: seven spikes that lean by a whole radian, on whole points.
    const double centre = markSide / 2;
    const double outer = std::trunc(centre);
    const double inner = std::trunc(outer - markSide / 6);
    auto at = [centre](double angle, double radius) {
        return QPointF(std::trunc(centre + std::sin(angle) * radius),
                       std::trunc(centre + std::cos(angle) * radius));
    };
    QPainterPath path;
    for (int spike = 0; spike < 7; ++spike) {
        const double angle = spike * 2 * pi / 7;
        spike == 0 ? path.moveTo(at(angle, inner)) : path.lineTo(at(angle, inner));
        path.lineTo(at(angle + 1, outer));
        path.lineTo(at(angle + 2, inner));
    }
    path.closeSubpath();
    path.setFillRule(Qt::WindingFill);
    return path.simplified();
}

QPainterPath markIcon() {
    // A superellipse. One octant is computed and mirrored, so that the outline is symmetric to the last bit.
    constexpr int steps = 40;
    constexpr double exponent = 5;
    const double radius = markSide / 2;
    QList<QPointF> octant;
    for (int step = 0; step <= steps; ++step) {
        const double angle = step * pi / 4 / steps;
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        const double reach = radius / std::pow(std::pow(c, exponent) + std::pow(s, exponent), 1 / exponent);
        octant.append(QPointF(c * reach, s * reach));
    }
    QList<QPointF> quarter = octant;
    for (auto point = octant.crbegin() + 1; point != octant.crend(); ++point) {
        quarter.append(QPointF(point->y(), point->x()));
    }
    QPolygonF outline;
    for (int turn = 0; turn < 4; ++turn) {
        for (qsizetype i = 0; i + 1 < quarter.size(); ++i) {
            const QPointF p = quarter[i];
            const QPointF turned = turn == 0   ? p
                                   : turn == 1 ? QPointF(-p.y(), p.x())
                                   : turn == 2 ? QPointF(-p.x(), -p.y())
                                               : QPointF(p.y(), -p.x());
            outline.append(QPointF(radius, radius) + turned);
        }
    }
    QPainterPath path;
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}

} // namespace tallyforge
