// The motifs of the app icons. Each fills a canvas of iconSide points, square to its edges; what shows the
// icon rounds its corners.
#pragma once

#include "Canvas.h"

namespace tallyforge {

inline constexpr double iconSide = 60;

// The apps that the preview shows.
void drawMarket(Canvas& canvas);
void drawPetals(Canvas& canvas);
void drawLetter(Canvas& canvas);
void drawSliders(Canvas& canvas);
void drawParcels(Canvas& canvas);

// The system's.
void drawLedger(Canvas& canvas);
void drawQuarry(Canvas& canvas);
void drawBeacon(Canvas& canvas);
void drawMetronome(Canvas& canvas);
void drawTrace(Canvas& canvas);

// The user's: things of the shelf and table, and of land and sky.
void drawLoom(Canvas& canvas);
void drawPear(Canvas& canvas);
void drawLantern(Canvas& canvas);
void drawEclair(Canvas& canvas);
void drawCubes(Canvas& canvas);
void drawTide(Canvas& canvas);
void drawRoad(Canvas& canvas);
void drawWeather(Canvas& canvas);
void drawStars(Canvas& canvas);

} // namespace tallyforge
