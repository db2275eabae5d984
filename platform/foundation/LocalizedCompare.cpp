#include "foundation/LocalizedCompare.h"

#include "foundation/NSLocale.h"

#include <dlfcn.h>
#include <limits>
#include <memory>
#include <string>
#include <unicode/ucol.h>
#include <unicode/uversion.h>

// The library's functions carry its version in their names, which its headers put there by macros.
#define TALLYFORGE_TEXT(name) #name
#define TALLYFORGE_SYMBOL(name) TALLYFORGE_TEXT(name)

namespace tallyforge {

namespace {

/// What is used of the library, which takes longer to load than most commands take in all: only at the first
/// comparison, and kept.
struct CollationLibrary {
    decltype(&::ucol_open) open;
    decltype(&::ucol_close) close;
    decltype(&::ucol_setAttribute) setAttribute;
    decltype(&::ucol_strcollUTF8) compare;

    static const CollationLibrary* load();
};

template <class Function>
bool Find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

const CollationLibrary* CollationLibrary::load() {
    static const CollationLibrary* const loaded = []() -> const CollationLibrary* {
        static CollationLibrary table{};
        void* library =
            dlopen("libicui18n.so." TALLYFORGE_SYMBOL(U_ICU_VERSION_MAJOR_NUM), RTLD_NOW | RTLD_LOCAL);
        const bool whole = library && Find(library, TALLYFORGE_SYMBOL(ucol_open), table.open) &&
                           Find(library, TALLYFORGE_SYMBOL(ucol_close), table.close) &&
                           Find(library, TALLYFORGE_SYMBOL(ucol_setAttribute), table.setAttribute) &&
                           Find(library, TALLYFORGE_SYMBOL(ucol_strcollUTF8), table.compare);
        return whole ? &table : nullptr;
    }();
    return loaded;
}

struct CloseCollator {
    void operator()(UCollator* collator) const { CollationLibrary::load()->close(collator); }
};
using Collator = std::unique_ptr<UCollator, CloseCollator>;

// Letters, then accents, then case and width: the library's three levels, each over the whole text.
Collator MakeCollator(const std::string& locale) {
    const CollationLibrary* library = CollationLibrary::load();
    if (!library) return nullptr;
    UErrorCode failed = U_ZERO_ERROR;
    Collator collator(library->open(locale.c_str(), &failed));
    if (U_FAILURE(failed)) return nullptr;
    library->setAttribute(collator.get(), UCOL_STRENGTH, UCOL_TERTIARY, &failed);
    library->setAttribute(collator.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &failed);
    library->setAttribute(collator.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &failed);
    return U_FAILURE(failed) ? nullptr : std::move(collator);
}

struct CurrentCollator {
    bool known = false;
    Collator collator;
};

CurrentCollator& Current() {
    static CurrentCollator current;
    return current;
}

int Sign(int number) {
    return (number > 0) - (number < 0);
}

} // namespace

int localizedStandardCompare(std::string_view a, std::string_view b) {
    CurrentCollator& current = Current();
    if (!current.known) current = {true, MakeCollator(NSLocaleCurrentIdentifier())};
    constexpr size_t most = std::numeric_limits<int32_t>::max();
    int order = 0;
    if (current.collator && a.size() <= most && b.size() <= most) {
        UErrorCode failed = U_ZERO_ERROR;
        order = CollationLibrary::load()->compare(current.collator.get(), a.data(),
                                                  static_cast<int32_t>(a.size()), b.data(),
                                                  static_cast<int32_t>(b.size()), &failed);
        if (U_FAILURE(failed)) order = 0;
    }
    return order != 0 ? Sign(order) : Sign(a.compare(b));
}

void LocalizedCompareForgetLocale() {
    Current() = {};
}

} // namespace tallyforge
