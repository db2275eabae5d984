#include "StockFolder.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>

namespace tallyforge::test {

QString stockPath(const QString& relative) {
    return QString(TALLYFORGE_RESOURCES) + "/stock/" + relative;
}

QImage stockPicture(const QString& stem, int scale) {
    const QString suffix = scale == 1 ? QString() : QString("@%1x").arg(scale);
    QImage image(stockPath(stem + suffix + ".png"));
    image.setDevicePixelRatio(1); // the tests count pixels
    return image;
}

int alphaAt(const QImage& image, int x, int y) {
    return qAlpha(image.pixel(x, y));
}

int alphaDifference(const QImage& a, const QImage& b) {
    int greatest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            greatest = qMax(greatest, qAbs(alphaAt(a, x, y) - alphaAt(b, x, y)));
        }
    }
    return greatest;
}

CommandResult runCommand(const QString& command) {
    CommandResult run;
    FILE* pipe = popen((command + " 2>&1").toLocal8Bit().constData(), "r");
    if (pipe == nullptr) return run;
    std::array<char, 4096> block{};
    for (std::size_t n = 0; (n = std::fread(block.data(), 1, block.size(), pipe)) > 0;) {
        run.output.append(block.data(), n);
    }
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

} // namespace tallyforge::test
