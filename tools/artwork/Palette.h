// The one paint box that all artwork is mixed from.
#pragma once

#include <QColor>

namespace tallyforge::palette {

inline constexpr QRgb ink = 0xff191d3d;
inline constexpr QRgb indigo = 0xff3d46a8;
inline constexpr QRgb iris = 0xff6f6be0;
inline constexpr QRgb plum = 0xff56215f;
inline constexpr QRgb orchid = 0xff91418c;
inline constexpr QRgb brick = 0xffc43a4e;
inline constexpr QRgb coral = 0xfffb6a57;
inline constexpr QRgb apricot = 0xfffda65a;
inline constexpr QRgb butter = 0xffffdc8c;
inline constexpr QRgb cream = 0xfffff7e8;
inline constexpr QRgb sand = 0xfff0d9b4;
inline constexpr QRgb sage = 0xff9ad3ab;
inline constexpr QRgb fern = 0xff3f9a76;
inline constexpr QRgb pine = 0xff0f4f52;
inline constexpr QRgb teal = 0xff1fa3a2;
inline constexpr QRgb sky = 0xff8fd3ec;
inline constexpr QRgb rose = 0xfff9b3bf;
inline constexpr QRgb slate = 0xff56648c;

/// The colour a fraction t of the way from one to the other, channel by channel.
inline QColor mix(QColor from, QColor to, double t) {
    auto between = [t](int a, int b) { return qRound(a + (b - a) * t); };
    return QColor(between(from.red(), to.red()), between(from.green(), to.green()),
                  between(from.blue(), to.blue()), between(from.alpha(), to.alpha()));
}

inline QColor faded(QColor colour, double alpha) {
    colour.setAlpha(qRound(255 * alpha));
    return colour;
}

inline QColor darker(QColor colour, double t) {
    return mix(colour, QColor(ink), t);
}
inline QColor lighter(QColor colour, double t) {
    return mix(colour, QColor(cream), t);
}

} // namespace tallyforge::palette
