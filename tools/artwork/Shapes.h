// Outlines, in points.
#pragma once

#include <QPainterPath>
#include <initializer_list>

namespace tallyforge {

/// The side of a mark: badge, close box.
inline constexpr double markSide = 24;

QPainterPath rectangle(QRectF rect);
QPainterPath rounded(QRectF rect, double radius);
QPainterPath circle(QPointF centre, double radius);
/// A circle of many short straight edges: truer than the painter's own at few pixels.
QPainterPath fineCircle(QPointF centre, double radius);
QPainterPath polygon(std::initializer_list<QPointF> points);
QPainterPath segment(QPointF from, QPointF to);
/// A rectangle with rounded corners of which those flagged stay sharp.
struct SharpCorners {
    bool topLeft = false, topRight = false, bottomRight = false, bottomLeft = false;
};
QPainterPath leaf(QRectF rect, double radius, SharpCorners sharp);
/// Everything below a wave line that runs across the width: a crest stands at x = phase.
QPainterPath sea(double width, double height, double level, double amplitude, double length, double phase);
/// A star whose points alternate between two radii, the first one upward.
QPainterPath starburst(QPointF centre, int points, double outer, double inner);

/// The outlines that a mark can have, in a square of markSide at the origin.
QPainterPath markCircle();
QPainterPath markSquare();
QPainterPath markTriangle();
QPainterPath markHexagon();
QPainterPath markStar();
/// An app icon's outline: the curvature of its corners begins gently.
QPainterPath markIcon();

} // namespace tallyforge
