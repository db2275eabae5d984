#include "foundation/NSPredicate.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace tallyforge {

namespace {

constexpr int kDeepest = 32; // parentheses and "not" within each other

bool Contains(const PropertyList& whole, const PropertyList& part) {
    if (const auto* list = whole.asArray()) return std::ranges::find(*list, part) != list->end();
    const std::string* text = whole.asString();
    const std::string* wanted = part.asString();
    return text && wanted && !wanted->empty() && text->find(*wanted) != std::string::npos;
}

bool IsWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.';
}

bool SameWord(std::string_view a, std::string_view b) {
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

} // namespace

/// Reads a format from left to right; "or" binds weakest, "not" strongest.
class NSPredicateParser {
  public:
    using Condition = NSPredicate::Condition;

    NSPredicateParser(std::string_view format, const std::vector<PropertyList>& arguments)
        : format_(format), rest_(format), arguments_(arguments) {}

    Result<NSPredicate> parse() {
        auto condition = alternatives(0);
        skipSpace();
        if (!condition || !rest_.empty())
            return Error{"the format is not understood at '" + std::string(rest_) + "'"};
        return NSPredicate(std::move(*condition));
    }

  private:
    std::optional<Condition> alternatives(int depth) {
        auto left = conjunction(depth);
        while (left && takeWord("or")) {
            auto right = conjunction(depth);
            if (!right) return std::nullopt;
            left = [a = std::move(*left), b = std::move(*right)](const auto& object) {
                return a(object) || b(object);
            };
        }
        return left;
    }

    std::optional<Condition> conjunction(int depth) {
        auto left = negation(depth);
        while (left && takeWord("and")) {
            auto right = negation(depth);
            if (!right) return std::nullopt;
            left = [a = std::move(*left), b = std::move(*right)](const auto& object) {
                return a(object) && b(object);
            };
        }
        return left;
    }

    std::optional<Condition> negation(int depth) {
        if (depth == kDeepest) return std::nullopt;
        if (takeWord("not")) {
            auto part = negation(depth + 1);
            if (!part) return std::nullopt;
            return [part = std::move(*part)](const auto& object) { return !part(object); };
        }
        if (!take("(")) return comparison();
        auto part = alternatives(depth + 1);
        return part && take(")") ? std::move(part) : std::nullopt;
    }

    std::optional<Condition> comparison() {
        std::string key(peekWord());
        rest_.remove_prefix(key.size());
        const bool equals = !key.empty() && (take("==") || take("="));
        if (key.empty() || (!equals && !takeWord("contains"))) return std::nullopt;
        auto wanted = constant();
        if (!wanted) return std::nullopt;
        return [key = std::move(key), wanted = std::move(*wanted), equals](const auto& object) {
            const NSPredicate::Value value = object(key);
            return value && (equals ? *value == wanted : Contains(*value, wanted));
        };
    }

    std::optional<PropertyList> constant() {
        skipSpace();
        if (take("%@")) return next_ < arguments_.size() ? std::optional(arguments_[next_++]) : std::nullopt;
        const char quote = rest_.empty() ? '\0' : rest_.front();
        const size_t end = quote == '\'' || quote == '"' ? rest_.find(quote, 1) : std::string_view::npos;
        if (end == std::string_view::npos) return std::nullopt;
        auto text = PropertyList::string(std::string(rest_.substr(1, end - 1)));
        rest_.remove_prefix(end + 1);
        return text;
    }

    void skipSpace() {
        while (!rest_.empty() && std::isspace(static_cast<unsigned char>(rest_.front())))
            rest_.remove_prefix(1);
    }

    std::string_view peekWord() {
        skipSpace();
        size_t length = 0;
        while (length < rest_.size() && IsWordCharacter(rest_[length]))
            ++length;
        return rest_.substr(0, length);
    }

    bool takeWord(std::string_view word) {
        const auto next = peekWord();
        if (!SameWord(next, word)) return false;
        rest_.remove_prefix(next.size());
        return true;
    }

    bool take(std::string_view sign) {
        skipSpace();
        if (!rest_.starts_with(sign)) return false;
        rest_.remove_prefix(sign.size());
        return true;
    }

    std::string_view format_;
    std::string_view rest_;
    const std::vector<PropertyList>& arguments_;
    size_t next_ = 0; // of the arguments
};

Result<NSPredicate> NSPredicate::predicateWithFormat(std::string_view format,
                                                     const std::vector<PropertyList>& arguments) {
    return NSPredicateParser(format, arguments).parse();
}

NSPredicate NSPredicate::andPredicateWithSubpredicates(std::vector<NSPredicate> parts) {
    return NSPredicate([parts = std::move(parts)](const Attributes& attributes) {
        return std::ranges::all_of(
            parts, [&](const NSPredicate& part) { return part.evaluateWithObject(attributes); });
    });
}

} // namespace tallyforge
