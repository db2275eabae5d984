#include "quartzcore/TextLayout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

namespace tallyforge {
namespace {

constexpr std::string_view ellipsis = "\u2026";
constexpr CGFloat tolerance = 0.01; // points that a line may be wider than its room

std::string_view withoutTrailingSpaces(std::string_view text) {
    const size_t last = text.find_last_not_of(' ');
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

class Typesetter {
  public:
    Typesetter(Graphics& graphics, const FontFace& font, const CGSize& room)
        : graphics_(graphics), font_(font), room_(room) {}

    CATextLines layOut(std::string_view text, bool wrapped) {
        const TextMeasure line = graphics_.measureText("Ag", font_);
        result_.ascent = line.ascent;
        result_.lineHeight = line.lineHeight();
        if (!(result_.lineHeight > 0)) return {};
        if (wrapped) {
            wrap(text);
        } else {
            std::string oneLine(text);
            std::replace(oneLine.begin(), oneLine.end(), '\n', ' ');
            addLast(oneLine);
        }
        return std::move(result_);
    }

  private:
    CGFloat widthOf(std::string_view text) const { return graphics_.measureText(text, font_).width; }
    bool fits(CGFloat width) const { return width <= room_.width + tolerance; }

    void add(std::string_view text, CGFloat width) { result_.lines.push_back({std::string(text), width}); }

    // The line that has to take all of the text that is left.
    void addLast(std::string_view text) {
        const CGFloat width = widthOf(text);
        fits(width) ? add(text, width) : addShortened(text);
    }

    void addShortened(std::string_view text) {
        result_.truncated = true;
        const std::vector<size_t> cuts = graphics_.characterBoundaries(text);
        const auto shortened = [text](size_t cut) {
            return std::string(withoutTrailingSpaces(text.substr(0, cut))).append(ellipsis);
        };
        const auto tooWide = [&](size_t cut) { return !fits(widthOf(shortened(cut))); };
        const auto firstTooWide =
            std::partition_point(cuts.begin(), cuts.end(), [&](size_t cut) { return !tooWide(cut); });
        if (firstTooWide == cuts.begin()) return;
        const std::string line = shortened(*(firstTooWide - 1));
        add(line, widthOf(line));
    }

    void wrap(std::string_view text) {
        const CGFloat possible = std::floor((room_.height + tolerance) / result_.lineHeight);
        const auto most = size_t(std::clamp<CGFloat>(possible, 1, 10000));
        while (true) {
            const size_t feed = text.find('\n');
            const std::string_view paragraph = text.substr(0, feed);
            const std::string_view later = feed == std::string_view::npos ? "" : text.substr(feed + 1);
            if (!wrapParagraph(paragraph, most, !later.empty())) return;
            if (later.empty()) return; // a line feed at the end begins no line
            text = later;
        }
    }

    // False when there is no room for another line.
    bool wrapParagraph(std::string_view rest, size_t most, bool more) {
        do {
            const size_t end = lineEnd(rest);
            const std::string_view line = withoutTrailingSpaces(rest.substr(0, end));
            std::string_view next = rest.substr(end);
            next.remove_prefix(std::min(next.find_first_not_of(' '), next.size()));
            if (result_.lines.size() + 1 == most && (!next.empty() || more)) {
                next.empty() ? addShortened(line) : addShortened(rest);
                return false;
            }
            add(line, widthOf(line));
            rest = next;
        } while (!rest.empty());
        return result_.lines.size() < most;
    }

    // How much of the text goes onto one line: up to the last space that still fits, or else as many
    // characters as fit, but at least one.
    size_t lineEnd(std::string_view text) const {
        size_t end = 0;
        for (size_t from = 0; from < text.size();) {
            const size_t wordStart = text.find_first_not_of(' ', from);
            const size_t wordEnd = wordStart == std::string_view::npos
                                       ? text.size()
                                       : std::min(text.find(' ', wordStart), text.size());
            if (!fits(widthOf(withoutTrailingSpaces(text.substr(0, wordEnd))))) break;
            end = from = wordEnd;
        }
        if (end > 0) return end;
        const std::string_view word = text.substr(
            0, std::min(text.find(' ', std::min(text.find_first_not_of(' '), text.size())), text.size()));
        const std::vector<size_t> cuts = graphics_.characterBoundaries(word);
        for (const size_t cut : cuts) {
            if (cut == 0) continue;
            if (end > 0 && !fits(widthOf(word.substr(0, cut)))) break;
            end = cut;
        }
        return end > 0 ? end : text.size();
    }

    Graphics& graphics_;
    const FontFace& font_;
    const CGSize& room_;
    CATextLines result_;
};

// Frames follow each other many times a second and mostly show the same texts.
class Cache {
  public:
    std::shared_ptr<const CATextLines> find(const std::string& key) const {
        const auto found = entries_.find(key);
        return found == entries_.end() ? nullptr : found->second;
    }
    void store(std::string key, std::shared_ptr<const CATextLines> lines) {
        if (key.size() > longestKey) return;
        if (entries_.size() >= capacity) entries_.clear();
        entries_.emplace(std::move(key), std::move(lines));
    }

  private:
    static constexpr size_t capacity = 512;
    static constexpr size_t longestKey = 4096;
    std::unordered_map<std::string, std::shared_ptr<const CATextLines>> entries_;
};

template <typename Value>
void appendBytes(std::string& key, const Value& value) {
    const auto* bytes = reinterpret_cast<const char*>(&value);
    key.append(bytes, sizeof(Value));
}

} // namespace

std::shared_ptr<const CATextLines> CALayOutText(std::string_view utf8, const FontFace& font,
                                                const CGSize& room, bool wrapped) {
    static const auto none = std::make_shared<const CATextLines>();
    Graphics* const graphics = Graphics::current();
    if (!graphics || utf8.empty() || !(room.width > 0) || !(room.height > 0) || !(font.size > 0)) return none;
    if (!std::isfinite(room.width) || !std::isfinite(room.height) || !std::isfinite(font.size)) return none;

    std::string key(utf8);
    appendBytes(key, font.size);
    appendBytes(key, font.weight);
    appendBytes(key, room.width);
    if (wrapped) appendBytes(key, room.height);
    appendBytes(key, reinterpret_cast<std::uintptr_t>(graphics));
    key.push_back(wrapped ? 'w' : '1');

    thread_local Cache cache;
    if (auto known = cache.find(key)) return known;
    auto lines = std::make_shared<const CATextLines>(Typesetter(*graphics, font, room).layOut(utf8, wrapped));
    cache.store(std::move(key), lines);
    return lines;
}

} // namespace tallyforge
