// picture_difference A.png B.png: how far two pictures of the same size are apart, in words. Fails where one
// cannot be read, or where they are of different sizes.

#include "PictureDifference.h"

#include "coregraphics/Canvas.h"
#include "rastergraphics/RasterGraphics.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

int main(int count, char** words) {
    using namespace tallyforge;
    if (count != 3) {
        std::fputs("usage: picture_difference A.png B.png\n", stderr);
        return 2;
    }
    Graphics::install(MakeRasterGraphics());
    CGImageRef pictures[2];
    for (int i = 0; i < 2; ++i) {
        std::ifstream file(words[i + 1], std::ios::binary);
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
        pictures[i] = Graphics::current()->decodeImage(bytes);
        if (!pictures[i]) {
            std::fprintf(stderr, "picture_difference: %s: no picture\n", words[i + 1]);
            return 1;
        }
    }
    const CGImage &a = *pictures[0], &b = *pictures[1];
    if (a.width() != b.width() || a.height() != b.height()) {
        std::fprintf(stderr, "picture_difference: %d x %d and %d x %d\n", a.width(), a.height(), b.width(),
                     b.height());
        return 1;
    }
    std::puts(Describe(DifferenceOf(a, b)).c_str());
    return 0;
}
