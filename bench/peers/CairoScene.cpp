#include "CairoScene.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace tallyforge {

namespace {

constexpr cairo_format_t kFormat = CAIRO_FORMAT_ARGB32;

cairo_matrix_t matrixFrom(const CGAffineTransform& t) {
    return {t.a, t.b, t.c, t.d, t.tx, t.ty};
}

void append(cairo_t* context, const CGPath& path) {
    for (const CGPath::Element& e : path.elements()) {
        const CGPoint* p = e.points;
        switch (e.verb) {
        case CGPath::Verb::move:
            cairo_move_to(context, p[0].x, p[0].y);
            break;
        case CGPath::Verb::line:
            cairo_line_to(context, p[0].x, p[0].y);
            break;
        case CGPath::Verb::cubic:
            cairo_curve_to(context, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
            break;
        case CGPath::Verb::close:
            cairo_close_path(context);
            break;
        }
    }
}

/// The layout's only line as glyphs that lie where the baseline begins at (x, y).
struct GlyphRun {
    CairoOwned<cairo_scaled_font_t> font;
    std::vector<cairo_glyph_t> glyphs;
};

std::vector<GlyphRun> glyphRunsOf(PangoLayoutLine* line, double x, double y) {
    std::vector<GlyphRun> runs;
    for (GSList* item = line->runs; item; item = item->next) {
        const auto* run = static_cast<const PangoGlyphItem*>(item->data);
        GlyphRun result;
        auto* font = reinterpret_cast<PangoCairoFont*>(run->item->analysis.font);
        result.font.reset(cairo_scaled_font_reference(pango_cairo_font_get_scaled_font(font)));
        for (int i = 0; i < run->glyphs->num_glyphs; ++i) {
            const PangoGlyphInfo& glyph = run->glyphs->glyphs[i];
            if (glyph.glyph != PANGO_GLYPH_EMPTY)
                result.glyphs.push_back({glyph.glyph, x + pango_units_to_double(glyph.geometry.x_offset),
                                         y + pango_units_to_double(glyph.geometry.y_offset)});
            x += pango_units_to_double(glyph.geometry.width);
        }
        runs.push_back(std::move(result));
    }
    return runs;
}

} // namespace

void CairoDelete::operator()(PangoLayout* layout) const {
    g_object_unref(layout);
}

CairoOwned<cairo_surface_t> CairoSurfaceFromImage(const CGImage& image) {
    CairoOwned<cairo_surface_t> surface(cairo_image_surface_create(kFormat, image.width(), image.height()));
    cairo_surface_flush(surface.get());
    unsigned char* rows = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < image.height(); ++y)
        std::copy_n(image.row(y), image.width(), reinterpret_cast<uint32_t*>(rows + ptrdiff_t(y) * stride));
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

CGImage ImageFromCairoSurface(cairo_surface_t* surface) {
    cairo_surface_flush(surface);
    CGImage image(cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface));
    const unsigned char* rows = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < image.height(); ++y)
        std::copy_n(reinterpret_cast<const uint32_t*>(rows + ptrdiff_t(y) * stride), image.width(),
                    image.row(y));
    return image;
}

struct CairoScene::Step {
    enum class Kind { save, restore, clip, fillRect, fill, stroke, picture, layout, glyphs, begin, end };
    Kind kind;
    cairo_matrix_t matrix;
    CGRect rect;
    CGColor color;
    CGFloat width = 0;
    CGFloat alpha = 1;
    CGPoint at;
    CairoOwned<cairo_path_t> path;
    CairoOwned<cairo_pattern_t> picture;
    CairoOwned<PangoLayout> layout;
    std::vector<GlyphRun> runs;
};

/// Makes each command ready for drawing it many times.
class CairoScene::Builder {
  public:
    Builder(CairoScene& scene, Texts texts, Pictures pictures)
        : scene_(scene), context_(scene.context_.get()), texts_(texts), pictures_(pictures) {}

    void add(const DisplayList::Command& command) {
        toPixels_ = command.toPixels;
        std::visit([this](const auto& what) { make(what); }, command.what);
    }

  private:
    using Kind = Step::Kind;

    Step& step(Kind kind) {
        scene_.steps_.push_back({kind, matrixFrom(toPixels_), {}, {}, 0, 1, {}, {}, {}, {}, {}});
        return scene_.steps_.back();
    }
    CairoOwned<cairo_path_t> outline(const CGPath& path) {
        cairo_set_matrix(context_, &scene_.steps_.back().matrix);
        cairo_new_path(context_);
        append(context_, path);
        CairoOwned<cairo_path_t> copy(cairo_copy_path(context_));
        cairo_new_path(context_);
        return copy;
    }
    static CGPath rectangle(const CGRect& rect) {
        CGPath path;
        path.addRect(rect);
        return path;
    }

    void make(const DisplayList::Save&) { step(Kind::save); }
    void make(const DisplayList::Restore&) { step(Kind::restore); }
    void make(const DisplayList::ClipRect& clip) {
        Step& s = step(Kind::clip);
        s.path = outline(rectangle(clip.rect));
    }
    void make(const DisplayList::ClipPath& clip) {
        Step& s = step(Kind::clip);
        s.path = outline(clip.path);
    }
    void make(const DisplayList::FillRect& fill) {
        Step& s = step(Kind::fillRect);
        s.rect = fill.rect;
        s.color = fill.color;
    }
    void make(const DisplayList::FillPath& fill) {
        Step& s = step(Kind::fill);
        s.path = outline(fill.path);
        s.color = fill.color;
    }
    void make(const DisplayList::StrokePath& stroke) {
        Step& s = step(Kind::stroke);
        s.path = outline(stroke.path);
        s.color = stroke.color;
        s.width = stroke.width;
    }
    void make(const DisplayList::Image& draw) {
        Step& s = step(Kind::picture);
        s.alpha = draw.alpha;
        auto image = CairoSurfaceFromImage(*draw.image);
        s.picture.reset(cairo_pattern_create_for_surface(image.get()));
        cairo_matrix_t toUser;
        cairo_matrix_init(&toUser, draw.image->width() / draw.rect.size.width, 0, 0,
                          draw.image->height() / draw.rect.size.height, 0, 0);
        cairo_matrix_translate(&toUser, -draw.rect.origin.x, -draw.rect.origin.y);
        cairo_pattern_set_matrix(s.picture.get(), &toUser);
        cairo_pattern_set_filter(s.picture.get(), CAIRO_FILTER_GOOD);
        const bool upright = toPixels_.b == 0 && toPixels_.c == 0 && toPixels_.a > 0 && toPixels_.d > 0;
        if (upright || pictures_ == Pictures::all) drawOnce(s, draw.rect);
    }
    // As the pixels that it comes to, at a whole pixel.
    void drawOnce(Step& s, const CGRect& rect) {
        const CGRect pixels = CGRectApplyAffineTransform(rect, toPixels_);
        constexpr CGFloat kHair = 1e-3;
        const CGFloat left = std::floor(pixels.origin.x + kHair), top = std::floor(pixels.origin.y + kHair);
        const CGFloat right = std::ceil(pixels.origin.x + pixels.size.width - kHair);
        const CGFloat bottom = std::ceil(pixels.origin.y + pixels.size.height - kHair);
        CairoOwned<cairo_surface_t> drawn(
            cairo_image_surface_create(kFormat, int(right - left), int(bottom - top)));
        CairoOwned<cairo_t> context(cairo_create(drawn.get()));
        cairo_translate(context.get(), -left, -top);
        cairo_transform(context.get(), &s.matrix);
        cairo_set_source(context.get(), s.picture.get());
        cairo_paint(context.get());
        s.picture.reset(cairo_pattern_create_for_surface(drawn.get()));
        cairo_matrix_init_translate(&s.matrix, left, top);
    }
    void make(const DisplayList::Text& text) {
        Step& s = step(Kind::layout);
        s.color = text.color;
        s.at = text.baseline;
        cairo_set_matrix(context_, &s.matrix);
        s.layout.reset(pango_cairo_create_layout(context_));
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        PangoContext* context = pango_layout_get_context(s.layout.get());
        pango_cairo_context_set_font_options(context, options);
        pango_context_set_round_glyph_positions(context, FALSE);
        cairo_font_options_destroy(options);
        PangoFontDescription* font = pango_font_description_from_string("Inter");
        pango_font_description_set_absolute_size(font, text.font.size * PANGO_SCALE);
        pango_font_description_set_weight(font, PangoWeight(text.font.weight));
        pango_layout_set_font_description(s.layout.get(), font);
        pango_font_description_free(font);
        pango_layout_set_text(s.layout.get(), text.utf8.data(), int(text.utf8.size()));
        pango_cairo_update_layout(context_, s.layout.get());
        if (texts_ == Texts::layouts) return;
        s.kind = Kind::glyphs;
        s.runs = glyphRunsOf(pango_layout_get_line_readonly(s.layout.get(), 0), s.at.x, s.at.y);
    }
    void make(const DisplayList::BeginGroup& group) {
        Step& s = step(Kind::begin);
        s.path = outline(rectangle(group.bounds));
        alphas_.push_back(group.alpha);
    }
    void make(const DisplayList::EndGroup&) {
        step(Kind::end).alpha = alphas_.back();
        alphas_.pop_back();
    }

    CairoScene& scene_;
    cairo_t* context_;
    Texts texts_;
    Pictures pictures_;
    CGAffineTransform toPixels_;
    std::vector<CGFloat> alphas_;
};

CairoScene::CairoScene(const DisplayList& list, Texts texts, Pictures pictures)
    : surface_(cairo_image_surface_create(kFormat, list.width, list.height)),
      context_(cairo_create(surface_.get())) {
    steps_.reserve(list.commands.size()); // steps are filled in where they stand
    Builder builder(*this, texts, pictures);
    for (const DisplayList::Command& command : list.commands)
        builder.add(command);
}

CairoScene::~CairoScene() = default;

void CairoScene::paint() {
    cairo_t* const c = context_.get();
    const auto setColor = [c](const CGColor& color) {
        if (color.alpha < 1)
            cairo_set_source_rgba(c, color.red, color.green, color.blue, color.alpha);
        else
            cairo_set_source_rgb(c, color.red, color.green, color.blue);
    };
    for (const Step& s : steps_) {
        cairo_set_matrix(c, &s.matrix);
        switch (s.kind) {
        case Step::Kind::save:
            cairo_save(c);
            break;
        case Step::Kind::restore:
            cairo_restore(c);
            break;
        case Step::Kind::clip:
            cairo_append_path(c, s.path.get());
            cairo_clip(c);
            break;
        case Step::Kind::fillRect:
            setColor(s.color);
            cairo_rectangle(c, s.rect.origin.x, s.rect.origin.y, s.rect.size.width, s.rect.size.height);
            cairo_fill(c);
            break;
        case Step::Kind::fill:
            setColor(s.color);
            cairo_append_path(c, s.path.get());
            cairo_fill(c);
            break;
        case Step::Kind::stroke:
            setColor(s.color);
            cairo_set_line_width(c, s.width);
            cairo_append_path(c, s.path.get());
            cairo_stroke(c);
            break;
        case Step::Kind::picture:
            cairo_set_source(c, s.picture.get());
            if (s.alpha < 1)
                cairo_paint_with_alpha(c, s.alpha);
            else
                cairo_paint(c);
            break;
        case Step::Kind::layout:
            setColor(s.color);
            cairo_move_to(c, s.at.x, s.at.y);
            pango_cairo_show_layout_line(c, pango_layout_get_line_readonly(s.layout.get(), 0));
            break;
        case Step::Kind::glyphs:
            setColor(s.color);
            for (const GlyphRun& run : s.runs) {
                cairo_set_scaled_font(c, run.font.get());
                cairo_show_glyphs(c, run.glyphs.data(), int(run.glyphs.size()));
            }
            break;
        case Step::Kind::begin:
            cairo_save(c);
            cairo_append_path(c, s.path.get());
            cairo_clip(c);
            cairo_push_group(c);
            break;
        case Step::Kind::end:
            cairo_pop_group_to_source(c);
            cairo_paint_with_alpha(c, s.alpha);
            cairo_restore(c);
            break;
        }
    }
}

} // namespace tallyforge
