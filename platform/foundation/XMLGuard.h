#pragma once

#include "foundation/PropertyListFormat.h"

#include <string_view>

namespace tallyforge {

/// Looks an XML text over before the parser, which knows no limits, sees it: well-formed UTF-8 of XML's own
/// characters, one root, elements within the limits of number and depth, no entities but the five and
/// characters by number, no definitions in the document type.
class XMLGuard {
  public:
    XMLGuard(std::string_view text, const PropertyListLimits& limits) : text_(text), limits_(limits) {}
    /// Why the text is refused, or nullptr.
    const char* reasonAgainst();

  private:
    bool fail(const char* reason);
    bool checkCharacters();
    bool checkEncoding();
    bool countPiece();
    bool checkReferences(std::string_view text);
    bool scan();
    bool takeMarkup();
    bool skipPast(std::string_view start, std::string_view end);
    bool takeDocumentType();
    bool takeTag();

    std::string_view text_;
    const PropertyListLimits& limits_;
    size_t at_ = 0;
    size_t depth_ = 0;
    size_t elements_ = 0;
    size_t pieces_ = 0; // all that the parser makes a node or an attribute of, or that parts two texts
    const char* reason_ = nullptr;
};

/// Whether XML text may hold the character.
bool IsXMLCharacter(char32_t c);

} // namespace tallyforge
