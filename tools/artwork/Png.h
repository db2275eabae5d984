// Writing PNG files whose bytes depend on nothing but the pixels.
#pragma once

#include <QByteArray>
#include <QImage>

namespace tallyforge {

/// The picture as a PNG file of eight bits a channel, without alpha when it is opaque. Of several row filters
/// the one that packs best is taken.
QByteArray encodePng(const QImage& image);

} // namespace tallyforge
