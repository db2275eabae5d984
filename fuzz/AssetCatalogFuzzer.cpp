// The bytes of a compiled catalogue: refused with a reason, or its pictures are asked for by name and one by
// one. Names are sorted and come once, pictures are bounded and premultiplied, and asking again gives the
// same.

#include "FuzzDevice.h"

#include "mobileservices/AssetCatalog.h"

#include <algorithm>

using namespace tallyforge;
using fuzz::Require;

namespace {

constexpr size_t kMost = 8; // of a kind

void IsSound(const CGImageRef& bitmap) {
    if (!bitmap) return;
    Require(bitmap->width() > 0 && bitmap->width() <= 4096 && bitmap->height() > 0 &&
                bitmap->height() <= 4096,
            "a picture has a bound");
    for (const uint32_t pixel : bitmap->pixels()) {
        const uint32_t alpha = pixel >> 24;
        Require((pixel >> 16 & 255) <= alpha && (pixel >> 8 & 255) <= alpha && (pixel & 255) <= alpha,
                "colours are premultiplied");
    }
}

void NamedPicturesAreSound(const AssetCatalog& catalog, const std::string& name) {
    for (const auto& [idiom, scale] :
         {std::pair(CatalogIdiom::phone, 2.0), std::pair(CatalogIdiom::pad, 1.0)}) {
        const auto picture = catalog.pictureNamed(name, idiom, scale);
        IsSound(picture.bitmap);
        Require(!picture.bitmap || picture.scale > 0, "a picture has a scale");
        const auto again = catalog.pictureNamed(name, idiom, scale);
        Require(!picture.bitmap == !again.bitmap &&
                    (!again.bitmap || again.bitmap->pixels() == picture.bitmap->pixels()),
                "a picture is the same when it is asked for again");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto catalog = AssetCatalog::open({data, data + size});
    if (!catalog) {
        Require(!catalog.reason().empty(), "a refusal has a reason");
        return 0;
    }
    const auto names = (*catalog)->facetNames();
    Require(std::ranges::adjacent_find(names, std::greater_equal()) == names.end(),
            "names are sorted and come once");
    for (size_t i = 0; i < std::min(names.size(), kMost); i++)
        NamedPicturesAreSound(**catalog, names[i]);
    const auto& renditions = (*catalog)->renditions();
    for (size_t i = 0; i < std::min(renditions.size(), kMost); i++) {
        if (auto rendition = CatalogRendition::parse(renditions[i].bytes))
            IsSound((*catalog)->bitmapOf(*rendition));
    }
    return 0;
}
