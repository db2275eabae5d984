#include "coregraphics/Canvas.h"

#include <utility>

namespace tallyforge {

namespace {

std::unique_ptr<Graphics>& installed() {
    static std::unique_ptr<Graphics> graphics;
    return graphics;
}

} // namespace

Graphics* Graphics::current() {
    return installed().get();
}

void Graphics::install(std::unique_ptr<Graphics> graphics) {
    installed() = std::move(graphics);
}

} // namespace tallyforge
