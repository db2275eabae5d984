// What the artwork tests share: the stock device's folder, its pictures, and running a program.
#pragma once

#include <QImage>
#include <QString>
#include <string>

namespace tallyforge::test {

/// The file's path inside the stock device.
QString stockPath(const QString& relative);
/// The picture "<stem>.png", "<stem>@2x.png"...; a null image when there is none.
QImage stockPicture(const QString& stem, int scale);
/// The alpha at the pixel, 0 to 255.
int alphaAt(const QImage& image, int x, int y);
/// The greatest difference of alpha between the two pictures of one size.
int alphaDifference(const QImage& a, const QImage& b);

struct CommandResult {
    int status = -1; ///< exit status
    std::string output;
};
/// Runs the shell command; output is what it wrote to both of its outputs.
CommandResult runCommand(const QString& command);

inline const QString systemMarks = "System/Library/CoreServices/SpringBoard.app/";
inline const QString bundle = "Library/PreferenceBundles/tallyforgeprefs.bundle/";

} // namespace tallyforge::test
