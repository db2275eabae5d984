#include "mobileservices/AssetCatalog.h"

#include <algorithm>

using namespace tallyforge;

// Opens the bytes as a catalogue, asks for pictures by name, and decodes what lies behind no name.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMost = 8;
    auto catalog = AssetCatalog::open({data, data + size});
    if (!catalog) return 0;
    auto names = (*catalog)->facetNames();
    for (size_t i = 0; i < std::min(names.size(), kMost); i++) {
        (*catalog)->pictureNamed(names[i], CatalogIdiom::phone, 2);
        (*catalog)->pictureNamed(names[i], CatalogIdiom::pad, 1);
    }
    const auto& renditions = (*catalog)->renditions();
    for (size_t i = 0; i < std::min(renditions.size(), kMost); i++) {
        if (auto rendition = CatalogRendition::parse(renditions[i].bytes)) (*catalog)->bitmapOf(*rendition);
    }
    return 0;
}
