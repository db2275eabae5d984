#include "foundation/XMLGuard.h"

#include "foundation/DecimalText.h"
#include "foundation/UTFText.h"

#include <algorithm>
#include <charconv>

namespace tallyforge {

namespace {

// Around the outermost container stands <plist>, in the innermost a leaf.
constexpr size_t kElementsAroundContainers = 2;

bool EqualsIgnoringCase(std::string_view a, std::string_view lowerCase) {
    return std::equal(a.begin(), a.end(), lowerCase.begin(), lowerCase.end(), [](char x, char y) {
        return (x >= 'A' && x <= 'Z' ? static_cast<char>(x + ('a' - 'A')) : x) == y;
    });
}

} // namespace

bool IsXMLCharacter(char32_t c) {
    return c == '\t' || c == '\n' || c == '\r' || (c >= 0x20 && c < 0xD800) || (c >= 0xE000 && c < 0xFFFE) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

const char* XMLGuard::reasonAgainst() {
    if (checkCharacters() && checkEncoding()) scan();
    return reason_;
}

bool XMLGuard::fail(const char* reason) {
    reason_ = reason;
    return false;
}

bool XMLGuard::checkCharacters() {
    for (std::string_view rest = text_; !rest.empty();) {
        const auto byte = static_cast<uint8_t>(rest[0]);
        if (byte >= 0x20 && byte < 0x80) {
            rest.remove_prefix(1);
            continue;
        }
        if (!IsXMLCharacter(TakeUTF8(rest, 0)))
            return fail("text that is no UTF-8 or holds characters not allowed in XML");
    }
    return true;
}

bool XMLGuard::checkEncoding() {
    constexpr std::string_view name = "encoding";
    if (!text_.starts_with("<?xml")) return true;
    std::string_view declaration = text_.substr(0, text_.find("?>"));
    const size_t at = declaration.find(name);
    if (at == std::string_view::npos) return true;
    declaration = SkipWhiteSpace(declaration.substr(at + name.size()));
    if (!declaration.starts_with('=')) return fail("XML declaration cannot be read");
    declaration = SkipWhiteSpace(declaration.substr(1));
    const size_t end = declaration.empty() ? std::string_view::npos : declaration.find(declaration[0], 1);
    if (end == std::string_view::npos) return fail("XML declaration cannot be read");
    const std::string_view encoding = declaration.substr(1, end - 1);
    // UTF-16 with its mark has been made UTF-8 already.
    for (const std::string_view known : {"utf-8", "us-ascii", "ascii", "utf-16"}) {
        if (EqualsIgnoringCase(encoding, known)) return true;
    }
    return fail("XML in an encoding other than UTF-8 and UTF-16");
}

bool XMLGuard::countPiece() {
    return ++pieces_ <= limits_.nodes || fail("too many pieces of XML markup");
}

bool XMLGuard::checkReferences(std::string_view text) {
    for (size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
        // The longest that is allowed is "&#x10FFFF;", give or take zeros before it.
        const std::string_view rest = text.substr(at + 1, 16);
        const size_t end = rest.find(';');
        if (end == std::string_view::npos) return fail("XML entity that is not allowed");
        std::string_view name = rest.substr(0, end);
        if (name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos") continue;
        if (!name.starts_with('#')) return fail("XML entity that is not allowed");
        const bool hexadecimal = name.size() > 1 && name[1] == 'x';
        name.remove_prefix(hexadecimal ? 2 : 1);
        uint32_t c = 0;
        const auto outcome =
            std::from_chars(name.data(), name.data() + name.size(), c, hexadecimal ? 16 : 10);
        if (outcome.ec != std::errc() || outcome.ptr != name.data() + name.size() || !IsXMLCharacter(c))
            return fail("XML character number that is not allowed");
    }
    return true;
}

bool XMLGuard::scan() {
    while (at_ < text_.size()) {
        if (text_[at_] == '<') {
            if (!takeMarkup()) return false;
            continue;
        }
        const size_t end = std::min(text_.find('<', at_), text_.size());
        const std::string_view between = text_.substr(at_, end - at_);
        if (depth_ == 0 && !SkipWhiteSpace(between).empty()) return fail("text outside the property list");
        if (!checkReferences(between)) return false;
        at_ = end;
    }
    if (depth_ > 0) return fail("XML that ends too early");
    return elements_ > 0 || fail("no property list in the XML");
}

bool XMLGuard::takeMarkup() {
    if (!countPiece()) return false;
    const std::string_view rest = text_.substr(at_);
    if (rest.starts_with("<!--")) return skipPast("<!--", "-->");
    if (rest.starts_with("<?")) return skipPast("<?", "?>");
    if (rest.starts_with("<![CDATA[") && depth_ > 0) return skipPast("<![CDATA[", "]]>");
    if (rest.starts_with("<!DOCTYPE") && elements_ == 0) return takeDocumentType();
    if (rest.starts_with("<!")) return fail("XML that cannot be read");
    return takeTag();
}

bool XMLGuard::skipPast(std::string_view start, std::string_view end) {
    const size_t found = text_.find(end, at_ + start.size());
    if (found == std::string_view::npos) return fail("XML that ends too early");
    at_ = found + end.size();
    return true;
}

bool XMLGuard::takeDocumentType() {
    char quote = 0;
    for (; at_ < text_.size(); ++at_) {
        const char c = text_[at_];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '[') {
            return fail("XML document type with definitions of its own");
        } else if (c == '>') {
            ++at_;
            return true;
        }
    }
    return fail("XML that ends too early");
}

bool XMLGuard::takeTag() {
    const size_t start = at_;
    char quote = 0;
    for (++at_; at_ < text_.size(); ++at_) {
        const char c = text_[at_];
        if (c == '<') return fail("XML that cannot be read");
        if (quote != 0)
            quote = c == quote ? '\0' : quote;
        else if (c == '>')
            break;
        else if (c == '"' || c == '\'') {
            quote = c;
            if (!countPiece()) return false;
        }
    }
    if (at_ == text_.size()) return fail("XML that ends too early");
    ++at_;
    const std::string_view tag = text_.substr(start, at_ - start);
    if (tag.starts_with("</")) {
        if (depth_ == 0) return fail("XML that cannot be read");
        --depth_;
        return true;
    }
    if (depth_ == 0 && elements_ > 0) return fail("more than one root in the XML");
    if (++elements_ > limits_.objects) return fail("too many objects");
    if (depth_ + 1 > limits_.depth + kElementsAroundContainers) return fail("containers nested too deep");
    if (!tag.ends_with("/>")) ++depth_;
    return checkReferences(tag);
}

} // namespace tallyforge
