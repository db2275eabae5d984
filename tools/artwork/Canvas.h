// A square picture that is drawn in points, at any number of pixels.
#pragma once

#include <QBrush>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

namespace tallyforge {

class Canvas {
  public:
    /// A transparent picture of pixels x pixels that measures points x points.
    Canvas(int pixels, double points);

    QPainter& painter() { return painter_; }
    double points() const { return points_; }

    /// The nearest pixel edge, in points.
    double snap(double value) const { return qRound(value * scale_) / scale_; }
    /// The rectangle with every edge on a pixel edge.
    QRectF snap(QRectF rect) const;
    /// A line width of at least one pixel, in points.
    double line(double width) const { return qMax(width, 1 / scale_); }

    void fill(const QPainterPath& shape, const QBrush& brush);
    void stroke(const QPainterPath& shape, const QBrush& brush, double width,
                Qt::PenCapStyle cap = Qt::RoundCap);
    /// A soft shadow of the shape, cast downwards; draw the shape itself over it.
    void shadow(const QPainterPath& shape, double drop, double softness, double strength);
    /// The full-bleed ground that all icons share: two colours, and light from the upper left.
    void ground(QColor top, QColor bottom);

    /// Ends the drawing.
    QImage finish();

  private:
    double points_;
    double scale_;
    QImage image_;
    QPainter painter_;
};

/// A gradient from the top colour at y = from to the bottom colour at y = to.
QBrush vertical(double from, double to, QColor top, QColor bottom);
QBrush horizontal(double from, double to, QColor left, QColor right);
/// Light from the colour at the centre to nothing at the radius.
QBrush radiance(QPointF centre, double radius, QColor colour);

} // namespace tallyforge
