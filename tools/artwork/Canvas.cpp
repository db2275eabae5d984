#include "Canvas.h"

#include "Palette.h"

#include <QPainterPathStroker>
#include <cmath>

namespace tallyforge {

Canvas::Canvas(int pixels, double points)
    : points_(points), scale_(pixels / points), image_(pixels, pixels, QImage::Format_ARGB32_Premultiplied) {
    image_.fill(Qt::transparent);
    painter_.begin(&image_);
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.scale(scale_, scale_);
    painter_.setPen(Qt::NoPen);
}

QRectF Canvas::snap(QRectF rect) const {
    return QRectF(QPointF(snap(rect.left()), snap(rect.top())),
                  QPointF(snap(rect.right()), snap(rect.bottom())));
}

void Canvas::fill(const QPainterPath& shape, const QBrush& brush) {
    painter_.fillPath(shape, brush);
}

void Canvas::stroke(const QPainterPath& shape, const QBrush& brush, double width, Qt::PenCapStyle cap) {
    painter_.strokePath(shape, QPen(brush, width, Qt::SolidLine, cap, Qt::RoundJoin));
}

void Canvas::shadow(const QPainterPath& shape, double drop, double softness, double strength) {
    // Thin layers, denser towards the shape, add up to a soft slope without any blurring.
    constexpr int layers = 9;
    const QColor layerColour = palette::faded(QColor(12, 8, 38), strength / layers);
    painter_.save();
    painter_.translate(0, drop);
    for (int layer = 0; layer < layers; ++layer) {
        const double reach = std::pow((layers - layer) / double{layers}, 1.7) * 1.6 * softness;
        QPainterPathStroker stroker(QPen(Qt::black, 2 * reach, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        QPainterPath grown = stroker.createStroke(shape);
        grown.addPath(shape);
        grown.setFillRule(Qt::WindingFill);
        painter_.fillPath(grown, layerColour);
    }
    painter_.restore();
}

void Canvas::ground(QColor top, QColor bottom) {
    const QRectF whole(0, 0, points_, points_);
    QLinearGradient slope(points_ * 0.3, 0, points_ * 0.7, points_);
    slope.setColorAt(0, top);
    slope.setColorAt(1, bottom);
    painter_.fillRect(whole, slope);
    painter_.fillRect(whole, radiance(QPointF(points_ * 0.18, 0), points_ * 1.05,
                                      palette::faded(QColor(255, 255, 255), 0.2)));
}

QImage Canvas::finish() {
    painter_.end();
    return image_;
}

static QBrush linear(QPointF from, QPointF to, QColor first, QColor last) {
    QLinearGradient gradient(from, to);
    gradient.setColorAt(0, first);
    gradient.setColorAt(1, last);
    return gradient;
}

QBrush vertical(double from, double to, QColor top, QColor bottom) {
    return linear(QPointF(0, from), QPointF(0, to), top, bottom);
}

QBrush horizontal(double from, double to, QColor left, QColor right) {
    return linear(QPointF(from, 0), QPointF(to, 0), left, right);
}

QBrush radiance(QPointF centre, double radius, QColor colour) {
    QRadialGradient gradient(centre, radius);
    // An even fade shows its rim; this one eases out.
    for (int stop = 0; stop <= 8; ++stop) {
        const double t = stop / 8.0;
        gradient.setColorAt(t, palette::faded(colour, colour.alphaF() * (1 - t) * (1 - t)));
    }
    return gradient;
}

} // namespace tallyforge
