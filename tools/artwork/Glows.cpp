#include "Glows.h"

#include <QPolygonF>
#include <QTransform>
#include <cmath>
#include <vector>

namespace tallyforge {

namespace {

/// A square field of light strengths, 0 to 1.
struct Field {
    int side;
    std::vector<double> values =
        std::vector<double>(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));

    double& at(int x, int y) {
        return values[static_cast<std::size_t>(y) * static_cast<std::size_t>(side) +
                      static_cast<std::size_t>(x)];
    }
};

double distanceToSegment(QPointF point, QPointF a, QPointF b) {
    const QPointF along = b - a;
    const double length2 = QPointF::dotProduct(along, along);
    const double t = length2 > 0 ? qBound(0.0, QPointF::dotProduct(point - a, along) / length2, 1.0) : 0.0;
    const QPointF gap = point - (a + t * along);
    return std::sqrt(QPointF::dotProduct(gap, gap));
}

double distanceOutside(QPointF point, const QList<QPolygonF>& rings) {
    double nearest = glowSide;
    bool inside = false;
    for (const QPolygonF& ring : rings) {
        for (qsizetype i = 0; i + 1 < ring.size(); ++i) {
            nearest = qMin(nearest, distanceToSegment(point, ring[i], ring[i + 1]));
        }
        inside = inside || ring.containsPoint(point, Qt::WindingFill);
    }
    return inside ? 0 : nearest;
}

/// A bell over the distance, lowered so that it ends at the reach.
double strength(double distance) {
    constexpr double reach = 9;
    constexpr double spread = 4.2;
    auto bell = [](double d) { return std::exp(-0.5 * (d / spread) * (d / spread)); };
    return qMax(0.0, (bell(distance) - bell(reach)) / (1 - bell(reach)));
}

/// Takes the creases out of the field, which a distance has wherever two edges are equally near.
Field softened(Field field, double sigma) {
    const int radius = static_cast<int>(std::ceil(2.5 * sigma));
    std::vector<double> kernel;
    double total = 0;
    for (int i = -radius; i <= radius; ++i) {
        kernel.push_back(std::exp(-0.5 * i * i / (sigma * sigma)));
        total += kernel.back();
    }
    auto pass = [&](bool across) {
        Field out{field.side};
        for (int y = 0; y < field.side; ++y) {
            for (int x = 0; x < field.side; ++x) {
                double sum = 0;
                for (int i = -radius; i <= radius; ++i) {
                    const int sx = across ? x + i : x;
                    const int sy = across ? y : y + i;
                    if (sx < 0 || sy < 0 || sx >= field.side || sy >= field.side) continue;
                    sum += *(kernel.begin() + i + radius) * field.at(sx, sy);
                }
                out.at(x, y) = sum / total;
            }
        }
        field = out;
    };
    pass(true);
    pass(false);
    return field;
}

} // namespace

QImage drawGlow(const QPainterPath& outline, int scale) {
    const int side = qRound(glowSide * scale);
    // Flattened large, for curves of fine steps.
    constexpr double fine = 16;
    QList<QPolygonF> rings;
    for (const QPolygonF& ring : outline.toSubpathPolygons(QTransform::fromScale(fine, fine))) {
        QPolygonF closed =
            QTransform::fromScale(1 / fine, 1 / fine).map(ring).translated(glowMargin, glowMargin);
        if (!closed.isClosed()) closed.append(closed.front());
        rings.append(closed);
    }

    Field field{side};
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            field.at(x, y) = strength(distanceOutside(QPointF((x + 0.5) / scale, (y + 0.5) / scale), rings));
        }
    }
    field = softened(field, 0.55 * scale);

    QImage image(side, side, QImage::Format_ARGB32);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            image.setPixel(x, y, qRgba(255, 255, 255, qRound(255 * qMin(field.at(x, y), 1.0))));
        }
    }
    return image;
}

} // namespace tallyforge
