#pragma once

#include "DisplayList.h"

#include <cairo/cairo.h>
#include <pango/pango-layout.h>

#include <memory>
#include <vector>

namespace tallyforge {

struct CairoDelete {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
    void operator()(cairo_path_t* path) const { cairo_path_destroy(path); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_scaled_font_t* font) const { cairo_scaled_font_destroy(font); }
    void operator()(PangoLayout* layout) const;
};
template <typename T>
using CairoOwned = std::unique_ptr<T, CairoDelete>;

/// A copy of the image as a surface.
CairoOwned<cairo_surface_t> CairoSurfaceFromImage(const CGImage& image);
/// The pixels of an ARGB32 surface.
CGImage ImageFromCairoSurface(cairo_surface_t* surface);

/// The same picture as a display list's, drawn on Cairo by all the means that save work from one repaint to
/// the next: texts are laid out once, images are surfaces and patterns, outlines are paths.
class CairoScene {
  public:
    enum class Texts {
        layouts, ///< shown as Pango layouts
        glyphs,  ///< as arrays of glyphs with their scaled fonts
    };
    enum class Pictures {
        upright, ///< upright images are scaled to the screen's pixels once; turned ones are drawn by
                 ///< transform
        all,     ///< turned ones are drawn once too
    };
    CairoScene(const DisplayList& list, Texts texts, Pictures pictures);
    ~CairoScene();
    CairoScene(const CairoScene&) = delete;
    CairoScene& operator=(const CairoScene&) = delete;

    /// Everything, over what the surface holds.
    void paint();
    cairo_surface_t* surface() const { return surface_.get(); }

  private:
    struct Step;
    class Builder;
    CairoOwned<cairo_surface_t> surface_;
    CairoOwned<cairo_t> context_;
    std::vector<Step> steps_;
};

} // namespace tallyforge
