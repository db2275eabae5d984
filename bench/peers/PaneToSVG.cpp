// The badge pane's screen as an SVG file and as a web page, for programs that make pictures of such: the same
// as `tallyforge render --pane badge` draws.

#include "DisplayList.h"
#include "Scenes.h"

#include "coregraphics/Canvas.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>
#include <vector>

namespace tallyforge {

namespace {

std::string base64(const std::vector<uint8_t>& bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t three = 0;
        for (size_t k = 0; k < 3; ++k)
            three = three << 8 | (i + k < bytes.size() ? bytes[i + k] : 0U);
        for (size_t k = 0; k < 4; ++k)
            text += i + k > bytes.size() ? '=' : kDigits[three >> (18 - 6 * k) & 63];
    }
    return text;
}

std::string escaped(std::string_view text) {
    std::string result;
    for (char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else
            result += c;
    }
    return result;
}

/// Writes a display list as SVG elements; one user unit is a point.
class Writer {
  public:
    explicit Writer(const DisplayList& list) {
        const CGFloat width = list.width / kPixelsAPoint, height = list.height / kPixelsAPoint;
        out_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
             << "\" viewBox=\"0 0 " << width << ' ' << height << "\">\n";
        open_.push_back(0);
        for (const DisplayList::Command& command : list.commands) {
            const CGAffineTransform& t = command.toPixels;
            const CGFloat k = 1 / kPixelsAPoint;
            toPoints_ = {t.a * k, t.b * k, t.c * k, t.d * k, t.tx * k, t.ty * k};
            std::visit([this](const auto& what) { write(what); }, command.what);
        }
        out_ << "</svg>\n";
    }
    std::string text() const { return out_.str(); }

  private:
    void write(const DisplayList::Save&) { open_.push_back(0); }
    void write(const DisplayList::Restore&) {
        for (; open_.back() > 0; --open_.back())
            out_ << "</g>\n";
        open_.pop_back();
    }
    void write(const DisplayList::ClipRect& clip) {
        CGPath path;
        path.addRect(clip.rect);
        write(DisplayList::ClipPath{path});
    }
    void write(const DisplayList::ClipPath& clip) {
        ++clips_;
        out_ << "<clipPath id=\"clip" << clips_ << "\"><path" << transform() << outline(clip.path)
             << "/></clipPath>\n<g clip-path=\"url(#clip" << clips_ << ")\">\n";
        ++open_.back();
    }
    void write(const DisplayList::FillRect& fill) {
        out_ << "<rect" << transform() << place(fill.rect) << paint("fill", fill.color) << "/>\n";
    }
    void write(const DisplayList::FillPath& fill) {
        out_ << "<path" << transform() << outline(fill.path) << paint("fill", fill.color) << "/>\n";
    }
    void write(const DisplayList::StrokePath& stroke) {
        out_ << "<path" << transform() << outline(stroke.path) << " fill=\"none\""
             << paint("stroke", stroke.color) << " stroke-width=\"" << stroke.width << "\""
             << (stroke.round ? " stroke-linecap=\"round\" stroke-linejoin=\"round\"" : "") << "/>\n";
    }
    void write(const DisplayList::Image& draw) {
        out_ << "<image" << transform() << place(draw.rect) << " opacity=\"" << draw.alpha
             << "\" preserveAspectRatio=\"none\" href=\"data:image/png;base64,"
             << base64(Graphics::current()->encodePNG(*draw.image)) << "\"/>\n";
    }
    void write(const DisplayList::Text& text) {
        out_ << "<text" << transform() << " x=\"" << text.baseline.x << "\" y=\"" << text.baseline.y
             << "\" font-family=\"Inter\" font-size=\"" << text.font.size << "px\" font-weight=\""
             << text.font.weight << "\"" << paint("fill", text.color) << ">" << escaped(text.utf8)
             << "</text>\n";
    }
    void write(const DisplayList::BeginGroup& group) {
        out_ << "<g opacity=\"" << group.alpha << "\">\n";
        open_.push_back(1);
    }
    void write(const DisplayList::EndGroup&) { write(DisplayList::Restore{}); }

    std::string transform() const {
        const CGAffineTransform& t = toPoints_;
        std::ostringstream text;
        text << " transform=\"matrix(" << t.a << ' ' << t.b << ' ' << t.c << ' ' << t.d << ' ' << t.tx << ' '
             << t.ty << ")\"";
        return text.str();
    }
    static std::string place(const CGRect& rect) {
        std::ostringstream text;
        text << " x=\"" << rect.origin.x << "\" y=\"" << rect.origin.y << "\" width=\"" << rect.size.width
             << "\" height=\"" << rect.size.height << "\"";
        return text.str();
    }
    static std::string paint(std::string_view what, const CGColor& color) {
        char text[96];
        const auto byte = [](CGFloat v) { return unsigned(std::lround(v * 255)); };
        std::snprintf(text, sizeof text, " %.*s=\"#%02x%02x%02x\" %.*s-opacity=\"%g\"", int(what.size()),
                      what.data(), byte(color.red), byte(color.green), byte(color.blue), int(what.size()),
                      what.data(), color.alpha);
        return text;
    }
    static std::string outline(const CGPath& path) {
        std::ostringstream text;
        text << " d=\"";
        for (const CGPath::Element& e : path.elements()) {
            constexpr std::string_view kLetters = "MLCZ";
            text << kLetters[size_t(e.verb)];
            const int points = e.verb == CGPath::Verb::close ? 0 : e.verb == CGPath::Verb::cubic ? 3 : 1;
            for (int i = 0; i < points; ++i)
                text << e.points[i].x << ' ' << e.points[i].y << ' ';
        }
        text << '"';
        return text.str();
    }

    std::ostringstream out_;
    CGAffineTransform toPoints_;
    std::vector<int> open_; // elements to be closed, by saved state
    int clips_ = 0;
};

bool writeFile(const char* file, const std::string& text) {
    std::ofstream out(file, std::ios::binary);
    out << text;
    out.close();
    if (!out) std::fprintf(stderr, "tallyforge: %s: cannot be written\n", file);
    return bool(out);
}

int run(const char* svgFile, const char* pageFile) {
    const FurnishedDevice device;
    SettingsStage stage(std::nullopt, kPixelsAPoint);
    if (!stage.app().openPane("badge")) return 1;
    stage.app().step();
    const std::string svg =
        Writer(RecordDisplayList(stage.app().layer(), 0, kToPixels, kScreenWidth, kScreenHeight)).text();
    const std::string page = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Badge</title>\n"
                             "<style>body { margin: 0 } svg { display: block }</style></head>\n<body>" +
                             svg + "</body></html>\n";
    return writeFile(svgFile, svg) && writeFile(pageFile, page) ? 0 : 1;
}

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    if (argc != 3 || std::string_view(argv[1]) == "--help") {
        std::puts("Writes the badge pane's screen as an SVG file and as a web page.\n"
                  "Usage: pane_to_svg OUT.svg OUT.html");
        return argc == 2 && std::string_view(argv[1]) == "--help" ? 0 : 2;
    }
    return tallyforge::run(argv[1], argv[2]);
}
