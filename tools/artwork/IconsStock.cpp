#include "Icons.h"
#include "Palette.h"
#include "Shapes.h"

#include <array>

namespace tallyforge {

using namespace palette;

/// A market stall: a striped awning over a counter with three fruits.
void drawMarket(Canvas& canvas) {
    canvas.ground(orchid, plum);
    const double eave = canvas.snap(24.5);
    const double counter = canvas.snap(39);
    const double foot = canvas.snap(49);

    canvas.fill(rectangle(canvas.snap(QRectF(14, 20, 32, 20))), faded(ink, 0.45));
    for (double x : {13.0, 43.5}) {
        canvas.fill(rectangle(canvas.snap(QRectF(x, 24, 3.5, 24))), QColor(sand));
    }

    struct Fruit {
        double x;
        QRgb colour;
    };
    for (Fruit fruit : {Fruit{22.5, apricot}, Fruit{30, coral}, Fruit{37.5, sage}}) {
        canvas.fill(circle(QPointF(fruit.x, counter - 2.2), 4.1),
                    vertical(counter - 6, counter + 3, lighter(fruit.colour, 0.25), fruit.colour));
    }
    const QPainterPath stand =
        leaf(QRectF(10.5, counter, 39, foot - counter), 3.2, {true, true, false, false});
    canvas.shadow(stand, 1.2, 2, 0.3);
    canvas.fill(stand, vertical(counter, foot, butter, mix(butter, apricot, 0.75)));
    canvas.fill(rectangle(QRectF(10.5, counter, 39, canvas.line(1.6))), QColor(cream));

    constexpr int stripes = 5;
    constexpr double width = 42.0 / stripes;
    QPainterPath awning;
    awning.setFillRule(Qt::WindingFill);
    std::array<QPainterPath, stripes> cloths;
    for (int i = 0; i < stripes; ++i) {
        const double left = 9 + i * width;
        const double topLeft = 14 + i * 32.0 / stripes;
        QPainterPath cloth(QPointF(topLeft, canvas.snap(10)));
        cloth.lineTo(topLeft + 32.0 / stripes, canvas.snap(10));
        cloth.lineTo(left + width, eave);
        cloth.arcTo(QRectF(left, eave - width / 2, width, width), 0, -180);
        cloth.closeSubpath();
        awning.addPath(cloth);
        cloths[static_cast<std::size_t>(i)] = cloth;
    }
    canvas.shadow(awning, 1.4, 2, 0.3);
    canvas.fill(awning, darker(coral, 0.1)); // shows in the seams
    for (std::size_t i = 0; i < cloths.size(); ++i) {
        const QColor colour = i % 2 == 0 ? QColor(coral) : QColor(cream);
        canvas.fill(cloths[i], vertical(10, eave + width / 2, lighter(colour, 0.12), darker(colour, 0.1)));
    }
}

/// Two petal-shaped voices, one answering the other.
void drawPetals(Canvas& canvas) {
    canvas.ground(coral, brick);
    const QPainterPath back = leaf(QRectF(9.5, 11, 29, 25), 11, {false, false, false, true});
    const QPainterPath front = leaf(QRectF(19.5, 22.5, 31, 26.5), 11.5, {false, false, true, false});
    canvas.shadow(back, 1.2, 2.2, 0.25);
    canvas.fill(back, vertical(11, 36, mix(plum, orchid, 0.45), plum));
    canvas.shadow(front, 1.4, 2.6, 0.36);
    canvas.fill(front, vertical(22, 49, cream, mix(cream, rose, 0.45)));

    const double width = 3.2;
    canvas.stroke(segment(QPointF(27.5, 32.2), QPointF(42.5, 32.2)), QColor(brick), width);
    canvas.stroke(segment(QPointF(27.5, 39.4), QPointF(36.5, 39.4)), QColor(apricot), width);
}

/// A letter folded in three, with its seal.
void drawLetter(Canvas& canvas) {
    canvas.ground(teal, pine);
    const double top = canvas.snap(11.5);
    const double fold1 = canvas.snap(23.5);
    const double fold2 = canvas.snap(36);
    const double foot = canvas.snap(48);
    auto panel = [](double y1, double left1, double y2, double left2) {
        constexpr double width = 32;
        return polygon(
            {QPointF(left1, y1), QPointF(left1 + width, y1), QPointF(left2 + width, y2), QPointF(left2, y2)});
    };
    const QPainterPath upper = panel(top, 16.5, fold1, 11.5);
    const QPainterPath middle = panel(fold1, 11.5, fold2, 16.5);
    const QPainterPath lower = panel(fold2, 16.5, foot, 11.5);
    QPainterPath sheet;
    sheet.setFillRule(Qt::WindingFill);
    for (const QPainterPath& part : {upper, middle, lower}) {
        sheet.addPath(part);
    }
    canvas.shadow(sheet, 1.6, 2.6, 0.34);
    canvas.fill(upper, vertical(top, fold1, cream, mix(cream, sand, 0.35)));
    canvas.fill(middle, vertical(fold1, fold2, mix(sand, slate, 0.22), sand));
    canvas.fill(lower, vertical(fold2, foot, cream, mix(cream, sand, 0.35)));

    const QColor writing = faded(teal, 0.75);
    canvas.stroke(segment(QPointF(20, 16.6), QPointF(42, 16.6)), writing, 1.9);
    canvas.stroke(segment(QPointF(18.2, 20.6), QPointF(33, 20.6)), writing, 1.9);

    const QPointF seal(30, fold2);
    const QPainterPath wax = starburst(seal, 12, 7, 6.2);
    canvas.shadow(wax, 0.9, 1.4, 0.34);
    canvas.fill(wax, vertical(fold2 - 8, fold2 + 8, coral, brick));
    canvas.stroke(circle(seal, 3.7), faded(cream, 0.85), 1.5);
}

/// Three sliders, each at a place of its own.
void drawSliders(Canvas& canvas) {
    canvas.ground(mix(iris, indigo, 0.35), darker(indigo, 0.6));
    struct Row {
        double y, knob;
        QRgb colour;
    };
    for (Row row : {Row{17, 39.5, butter}, Row{30, 21, coral}, Row{43, 32, sage}}) {
        const double half = canvas.snap(2.1);
        const double y = canvas.snap(row.y);
        canvas.fill(rounded(QRectF(10.5, y - half, 39, 2 * half), half), faded(ink, 0.5));
        canvas.fill(rounded(QRectF(10.5, y - half, row.knob - 10.5, 2 * half), half), QColor(row.colour));
        const QPainterPath knob = circle(QPointF(row.knob, y), 5.7);
        canvas.shadow(knob, 1, 1.8, 0.42);
        canvas.fill(knob, vertical(y - 6, y + 6, cream, mix(cream, sand, 0.75)));
        canvas.fill(circle(QPointF(row.knob, y), 2.2), QColor(row.colour));
    }
}

/// Three wrapped parcels, piled up.
void drawParcels(Canvas& canvas) {
    canvas.ground(butter, mix(apricot, coral, 0.35));
    struct Parcel {
        QRectF box;
        QRgb colour;
        double ribbon;
        QRgb ribbonColour;
    };
    const Parcel parcels[] = {{QRectF(10, 35.5, 40, 14), indigo, 24, butter},
                              {QRectF(14, 23, 32, 12.5), teal, 35, cream},
                              {QRectF(20, 13, 19, 10), coral, 29.5, plum}};
    for (const Parcel& parcel : parcels) {
        const QRectF box = canvas.snap(parcel.box);
        const QPainterPath body = rounded(box, 1.8);
        canvas.shadow(body, 1, 1.8, 0.26);
        canvas.fill(body, vertical(box.top(), box.bottom(), lighter(parcel.colour, 0.14),
                                   darker(parcel.colour, 0.14)));
        canvas.fill(rectangle(canvas.snap(QRectF(parcel.ribbon - 2, box.top(), 4, box.height()))),
                    QColor(parcel.ribbonColour));
        canvas.painter().save();
        canvas.painter().setClipPath(body);
        canvas.fill(rectangle(QRectF(box.left(), box.top(), box.width(), canvas.snap(2.4))),
                    faded(QColor(255, 255, 255), 0.2));
        canvas.painter().restore();
    }
    // The bow: two loops that meet at the knot.
    const QPointF knot(29.5, canvas.snap(13));
    for (double side : {-1.0, 1.0}) {
        QPainterPath loop(knot);
        loop.cubicTo(knot + QPointF(side * 2.5, -6.5), knot + QPointF(side * 9, -6),
                     knot + QPointF(side * 7.6, -2.2));
        loop.cubicTo(knot + QPointF(side * 6.8, 0), knot + QPointF(side * 3, 0), knot);
        canvas.fill(loop, vertical(knot.y() - 6, knot.y(), orchid, plum));
    }
    canvas.fill(circle(knot + QPointF(0, -0.6), 1.7), QColor(plum));
}

} // namespace tallyforge
