// tallyforge-artwork OUT: draws every picture of the stock device into the folder OUT, by its place on the
// device.
#include "AppIcons.h"
#include "Glows.h"
#include "Icons.h"
#include "Marks.h"
#include "Png.h"
#include "RowIcons.h"
#include "Shapes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdio>
#include <exception>
#include <stdexcept>

namespace tallyforge {

namespace {

const QString systemFolder = "System/Library/CoreServices/SpringBoard.app/";
const QString bundleFolder = "Library/PreferenceBundles/tallyforgeprefs.bundle/";

class Writer {
  public:
    explicit Writer(const QString& root) : root_(root) {}

    void write(const QString& stem, int scale, const QImage& image) {
        const QString suffix = scale == 1 ? QString() : QString("@%1x").arg(scale);
        const QString path = root_.filePath(stem + suffix + ".png");
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        const QByteArray bytes = encodePng(image);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()) {
            throw std::runtime_error(path.toStdString() + ": " + file.errorString().toStdString());
        }
        ++files_;
        bytes_ += bytes.size();
    }

    int files() const { return files_; }
    qint64 bytes() const { return bytes_; }

  private:
    QDir root_;
    int files_ = 0;
    qint64 bytes_ = 0;
};

void drawMarks(Writer& writer) {
    for (int scale : {1, 2, 3}) {
        writer.write(systemFolder + "IconBadgeAndCloseBox", scale, drawPlate(scale));
        writer.write(systemFolder + "IconCloseBoxX", scale, drawCross(scale));
        writer.write(systemFolder + "IconNewDot", scale, drawDot(scale));
        writer.write(bundleFolder + "IconBadgeAndCloseBox", scale, drawPlate(scale));
        writer.write(bundleFolder + "icon_shape", scale, drawIconPlate(scale));
        writer.write(bundleFolder + "glow_circle", scale, drawGlow(markCircle(), scale));
        writer.write(bundleFolder + "glow_square", scale, drawGlow(markSquare(), scale));
        writer.write(bundleFolder + "glow_triangle", scale, drawGlow(markTriangle(), scale));
        writer.write(bundleFolder + "glow_hexagon", scale, drawGlow(markHexagon(), scale));
        writer.write(bundleFolder + "glow_star", scale, drawGlow(markStar(), scale));
        writer.write(bundleFolder + "glow_icon", scale, drawGlow(markIcon(), scale));
    }
}

void drawRowIcons(Writer& writer) {
    for (const RowIcon& icon : rowIcons()) {
        for (int scale : {1, 2, 3}) {
            writer.write(bundleFolder + icon.stem, scale, icon.draw(scale));
        }
    }
}

void drawApps(Writer& writer) {
    auto draw = [&writer](const AppIcon& icon, const QString& stem, int points, int scale) {
        Canvas canvas(points * scale, iconSide);
        icon.draw(canvas);
        writer.write(icon.folder + "/" + stem, scale, canvas.finish());
    };
    for (const AppIcon& icon : appIcons()) {
        for (int scale : {1, 2, 3}) {
            draw(icon, icon.phoneName, 60, scale);
        }
        for (int scale : {1, 2}) {
            draw(icon, icon.padName, 76, scale);
        }
    }
}

int run(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tallyforge-artwork OUT\n");
        return 2;
    }
    try {
        Writer writer(QString::fromLocal8Bit(argv[1]));
        drawMarks(writer);
        drawRowIcons(writer);
        drawApps(writer);
        std::printf("%d pictures, %lld KiB\n", writer.files(), static_cast<long long>(writer.bytes() / 1024));
        return std::fflush(stdout) == 0 ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tallyforge-artwork: %s\n", error.what());
        return 1;
    }
}

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    return tallyforge::run(argc, argv);
}
