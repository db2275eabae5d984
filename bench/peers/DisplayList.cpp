#include "DisplayList.h"

#include "quartzcore/RenderServer.h"

#include <utility>

namespace tallyforge {

namespace {

CGColor faded(CGColor color, CGFloat alpha) {
    color.alpha *= alpha;
    return color;
}

class RecordingCanvas final : public Canvas {
  public:
    explicit RecordingCanvas(DisplayList& list) : list_(list) {
        states_.push_back({CGAffineTransformIdentity, {{0, 0}, {CGFloat(list.width), CGFloat(list.height)}}});
    }

    void save() override {
        add(DisplayList::Save{});
        states_.push_back(states_.back());
    }
    void restore() override {
        states_.pop_back();
        add(DisplayList::Restore{});
    }
    void setTransform(const CGAffineTransform& userToPixels) override {
        states_.back().toPixels = userToPixels;
    }
    CGAffineTransform transform() const override { return states_.back().toPixels; }
    void clipToRect(const CGRect& rect) override {
        narrow(rect);
        add(DisplayList::ClipRect{rect});
    }
    void clipToPath(const CGPath& path) override {
        narrow(path.boundingBox());
        add(DisplayList::ClipPath{path});
    }
    CGRect clipBounds() const override { return states_.back().clip; }
    void fillRect(const CGRect& rect, const CGColor& color, CGFloat alpha, CGBlendMode) override {
        add(DisplayList::FillRect{rect, faded(color, alpha)});
    }
    void fillPath(const CGPath& path, const CGColor& color, CGFloat alpha, CGBlendMode) override {
        add(DisplayList::FillPath{path, faded(color, alpha)});
    }
    void strokePath(const CGPath& path, const CGColor& color, CGFloat width, bool round) override {
        add(DisplayList::StrokePath{path, color, width, round});
    }
    void drawImage(const CGImageRef& image, const CGRect& rect, CGFloat alpha, CGBlendMode) override {
        if (image) add(DisplayList::Image{image, rect, alpha});
    }
    void drawText(std::string_view utf8, const FontFace& font, const CGPoint& baseline, const CGColor& color,
                  CGFloat alpha) override {
        if (!utf8.empty()) add(DisplayList::Text{std::string(utf8), font, baseline, faded(color, alpha)});
    }
    void beginGroup(const CGRect& bounds, CGFloat alpha) override {
        add(DisplayList::BeginGroup{bounds, alpha});
        states_.push_back(states_.back());
        narrow(bounds);
    }
    void endGroup() override {
        states_.pop_back();
        add(DisplayList::EndGroup{});
    }
    void flush() override {}

  private:
    struct State {
        CGAffineTransform toPixels;
        CGRect clip;
    };

    template <typename What>
    void add(What what) {
        list_.commands.push_back({states_.back().toPixels, std::move(what)});
    }
    void narrow(const CGRect& rect) {
        State& state = states_.back();
        state.clip = CGRectIntersection(state.clip, CGRectApplyAffineTransform(rect, state.toPixels));
    }

    DisplayList& list_;
    std::vector<State> states_;
};

} // namespace

DisplayList RecordDisplayList(const CALayer& root, CGFloat seconds, const CGAffineTransform& toPixels,
                              int width, int height) {
    DisplayList list;
    list.width = width;
    list.height = height;
    RecordingCanvas canvas(list);
    RenderServer::paint(root, seconds, canvas, toPixels);
    return list;
}

} // namespace tallyforge
