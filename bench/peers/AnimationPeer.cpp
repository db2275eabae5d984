// Frames of the preview with a spinning badge and a bouncing close box, beside Qt Quick's software renderer.

#include "DisplayList.h"
#include "PairedRuns.h"
#include "PictureDifference.h"
#include "Scenes.h"

#include "coregraphics/Canvas.h"
#include "quartzcore/FrameUpdate.h"
#include "uikit/UIView.h"

#include <QAnimationDriver>
#include <QGuiApplication>
#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickImageProvider>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickRenderTarget>
#include <QQuickWindow>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <type_traits>

namespace tallyforge {

namespace {

constexpr int kFrames = 300;
constexpr float kSpin = 1;
constexpr float kBounce = 6;
constexpr double kMillisecondsACycle = 1000;
/// Milliseconds in which Qt's animations are begun by its event loop; later frames need none.
constexpr int kBeginning = 50;

/// How high the close box is at the ends of the equal parts of a cycle, in 128ths of its height.
constexpr std::array kHeights = {0,  60, 83, 100, 114, 124, 128, 128, 124, 114, 100,
                                 83, 60, 32, 0,   0,   18,  28,  32,  28,  18,  0};

/// What the scene in the peer's own language names by number.
class Pictures final : public QQuickImageProvider {
  public:
    Pictures() : QQuickImageProvider(QQuickImageProvider::Image) {}
    int add(const CGImage& image) {
        QImage picture(image.width(), image.height(), QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < image.height(); ++y)
            std::copy_n(image.row(y), image.width(), reinterpret_cast<uint32_t*>(picture.scanLine(y)));
        pictures_.push_back(picture);
        return int(pictures_.size()) - 1;
    }
    QImage requestImage(const QString& id, QSize* size, const QSize&) override {
        const QImage& picture = pictures_.at(size_t(id.toInt()));
        *size = picture.size();
        return picture;
    }

  private:
    std::vector<QImage> pictures_;
};

QString colorName(const CGColor& color) {
    return QColor::fromRgbF(float(color.red), float(color.green), float(color.blue), float(color.alpha))
        .name(QColor::HexArgb);
}

/// The commands as items, in pixels from the origin.
QString itemsFor(const DisplayList& list, const CGPoint& origin, Pictures& pictures) {
    QString items;
    for (const DisplayList::Command& command : list.commands) {
        const CGAffineTransform& t = command.toPixels;
        const CGFloat across = std::hypot(t.a, t.b), down = std::hypot(t.c, t.d);
        const CGFloat degrees = std::atan2(t.b, t.a) * 180 / std::numbers::pi;
        const auto box = [&](const CGRect& rect) {
            const CGPoint middle = CGPointApplyAffineTransform({CGRectGetMidX(rect), CGRectGetMidY(rect)}, t);
            const CGFloat width = rect.size.width * across, height = rect.size.height * down;
            return QStringLiteral("x: %1; y: %2; width: %3; height: %4; rotation: %5; ")
                .arg(middle.x - width / 2 - origin.x)
                .arg(middle.y - height / 2 - origin.y)
                .arg(width)
                .arg(height)
                .arg(degrees);
        };
        if (const auto* fill = std::get_if<DisplayList::FillRect>(&command.what)) {
            items += "Rectangle { " + box(fill->rect) + "color: \"" + colorName(fill->color) + "\" }\n";
        } else if (const auto* draw = std::get_if<DisplayList::Image>(&command.what)) {
            items += "Image { " + box(draw->rect) +
                     QStringLiteral("opacity: %1; source: \"image://bench/%2\" }\n")
                         .arg(draw->alpha)
                         .arg(pictures.add(*draw->image));
        } else if (const auto* text = std::get_if<DisplayList::Text>(&command.what)) {
            const CGPoint at = CGPointApplyAffineTransform(text->baseline, t);
            items += QStringLiteral("Text { x: %1; y: %2 - baselineOffset; text: \"%3\"; color: \"%4\"; "
                                    "font.family: \"Inter\"; font.pixelSize: %5; font.weight: %6; "
                                    "font.hintingPreference: Font.PreferNoHinting }\n")
                         .arg(at.x - origin.x)
                         .arg(at.y - origin.y)
                         .arg(QString::fromStdString(text->utf8), colorName(text->color))
                         .arg(std::lround(text->font.size * across))
                         .arg(text->font.weight);
        } else if (!std::holds_alternative<DisplayList::Save>(command.what) &&
                   !std::holds_alternative<DisplayList::Restore>(command.what)) {
            std::fprintf(stderr,
                         "tallyforge: animated frame: the scene holds what the peer is not told of\n");
            std::exit(1);
        }
    }
    return items;
}

QString bounceBetween(CGFloat rest, CGFloat height) {
    QString steps;
    for (size_t i = 1; i < kHeights.size(); ++i)
        steps += QStringLiteral("NumberAnimation { from: %1; to: %2; duration: %3 }\n")
                     .arg(rest - kHeights[i - 1] * height / 128)
                     .arg(rest - kHeights[i] * height / 128)
                     .arg(std::lround(kMillisecondsACycle * double(i) / (kHeights.size() - 1)) -
                          std::lround(kMillisecondsACycle * double(i - 1) / (kHeights.size() - 1)));
    return "SequentialAnimation on y { loops: Animation.Infinite\n" + steps + "}\n";
}

/// The scene in the peer's language: what stands still, then the two marks about their middles.
QString describe(const PreviewScene& scene, Pictures& pictures) {
    const auto record = [&scene](const CALayer& layer, const CGAffineTransform& toPixels) {
        return RecordDisplayList(layer, scene.seconds(), toPixels, kPreviewWidth, kPreviewHeight);
    };
    UIView& badge = *scene.cell().badgeView();
    UIView& box = *scene.cell().closeBoxView();
    const CGPoint icon = scene.cell().iconView()->frame().origin;
    const CGAffineTransform iconToPixels{kPixelsAPoint,         0, 0, kPixelsAPoint, icon.x * kPixelsAPoint,
                                         icon.y * kPixelsAPoint};
    const auto mark = [&](const UIView& view,
                          const QString& (*animation)(QString&, const CGPoint&, CGFloat)) {
        const CGPoint middle = CGPointApplyAffineTransform(view.layer()->position(), iconToPixels);
        QString motion;
        animation(motion, middle, view.frame().size.height * kPixelsAPoint);
        return QStringLiteral("Item { x: %1; y: %2\n").arg(middle.x).arg(middle.y) + motion +
               itemsFor(record(*view.layer(), iconToPixels), middle, pictures) + "}\n";
    };
    const QString marks =
        mark(badge,
             [](QString& motion, const CGPoint&, CGFloat) -> const QString& {
                 return motion =
                            QStringLiteral("NumberAnimation on rotation { from: 0; to: 360; duration: %1; "
                                           "loops: Animation.Infinite }\n")
                                .arg(kMillisecondsACycle);
             }) +
        mark(box, [](QString& motion, const CGPoint& middle, CGFloat height) -> const QString& {
            return motion = bounceBetween(middle.y, height);
        });
    badge.setHidden(true);
    box.setHidden(true);
    const QString rest = itemsFor(record(scene.layer(), kToPixels), {}, pictures);
    badge.setHidden(false);
    box.setHidden(false);
    return QStringLiteral("import QtQuick\nItem { width: %1; height: %2\n")
               .arg(kPreviewWidth)
               .arg(kPreviewHeight) +
           rest + marks + "}\n";
}

/// The peer's clock: it goes on by a frame when it is told to.
class FrameClock final : public QAnimationDriver {
  public:
    void advance() override {
        ++frame_;
        advanceAnimation();
    }
    qint64 elapsed() const override { return std::llround(frame_ * 1000.0 / kFramesASecond); }

  private:
    int64_t frame_ = 0;
};

/// The scene under Qt Quick, painted by its software renderer into a picture; only what moves is painted
/// again, as it does by itself.
class QuickScene {
  public:
    explicit QuickScene(const PreviewScene& scene)
        : window_(&control_), picture_(kPreviewWidth, kPreviewHeight, QImage::Format_ARGB32_Premultiplied) {
        clock_.install();
        auto* pictures = new Pictures; // the engine's from here on
        engine_.addImageProvider(QStringLiteral("bench"), pictures);
        const QString source = describe(scene, *pictures);
        QQmlComponent component(&engine_);
        component.setData(source.toUtf8(), {});
        item_.reset(qobject_cast<QQuickItem*>(component.create()));
        if (!item_) {
            std::fprintf(stderr, "tallyforge: animated frame: %s\n", qPrintable(component.errorString()));
            std::exit(1);
        }
        window_.setGeometry(0, 0, kPreviewWidth, kPreviewHeight);
        window_.setColor(Qt::white);
        window_.contentItem()->setSize(picture_.size());
        item_->setParentItem(window_.contentItem());
        window_.setRenderTarget(QQuickRenderTarget::fromPaintDevice(&picture_));
        if (window_.rendererInterface()->graphicsApi() != QSGRendererInterface::Software) {
            std::fprintf(stderr, "tallyforge: animated frame: Qt Quick does not use its software renderer\n");
            std::exit(1);
        }
        paint();
    }
    ~QuickScene() {
        item_.reset();
        clock_.uninstall();
    }
    QuickScene(const QuickScene&) = delete;
    QuickScene& operator=(const QuickScene&) = delete;

    void nextFrame() {
        clock_.advance();
        if (clock_.elapsed() < kBeginning) QCoreApplication::processEvents();
        paint();
    }
    CGImage picture() const {
        CGImage image(picture_.width(), picture_.height());
        for (int y = 0; y < image.height(); ++y)
            std::copy_n(reinterpret_cast<const uint32_t*>(picture_.constScanLine(y)), image.width(),
                        image.row(y));
        return image;
    }

  private:
    void paint() {
        control_.polishItems();
        control_.beginFrame();
        control_.sync();
        control_.render();
        control_.endFrame();
    }

    FrameClock clock_;
    QQuickRenderControl control_;
    QQuickWindow window_;
    QQmlEngine engine_;
    QImage picture_;
    std::unique_ptr<QQuickItem> item_;
};

void run(const PairedRuns& runs) {
    constexpr const char* item = "animated-frame";
    const FurnishedDevice device;
    FurnishedDevice::set("badgeglowalpha", 80);
    FurnishedDevice::set("badgeanimtype", kSpin);
    FurnishedDevice::set("closeboxanimtype", kBounce);
    PreviewScene scene;
    CGImage bitmap(kPreviewWidth, kPreviewHeight);
    CAFrameUpdater updater;
    double painted = 0;
    const auto paint = [&] {
        for (const CGRect& rect : updater.update(scene.layer(), scene.seconds(), kToPixels, bitmap))
            painted += rect.size.width * rect.size.height;
    };
    QuickScene peer(scene);
    paint();

    double mean = 0, share = 0;
    const auto compare = [&](int frame) {
        const CGImage theirs = peer.picture();
        const PictureDifference difference = DifferenceOf(bitmap, theirs);
        mean = std::max(mean, difference.mean);
        share = std::max(share, difference.share);
        KeepPicture(bitmap, "animated-" + std::to_string(frame) + "-ours");
        KeepPicture(theirs, "animated-" + std::to_string(frame) + "-quick");
    };
    compare(0);
    painted = 0;
    constexpr int kCompared = 60, kEvery = 12;
    for (int frame = 1; frame <= kCompared; ++frame) {
        scene.nextFrame();
        paint();
        peer.nextFrame();
        if (frame % kEvery == 0) compare(frame);
    }
    PairedRuns::remark(item, "at the worst of six moments " + Describe({mean, share}) + "; ours paints " +
                                 PairedRuns::figure(painted / kCompared, 0) + " of " +
                                 std::to_string(kPreviewWidth * kPreviewHeight) + " pixels a frame");

    const auto ours = [&] {
        for (int frame = 0; frame < kFrames; ++frame) {
            scene.nextFrame();
            paint();
        }
    };
    const auto theirs = [&] {
        for (int frame = 0; frame < kFrames; ++frame)
            peer.nextFrame();
    };
    runs.measureBatches(item, kFrames, ours, theirs);
}

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    const tallyforge::PairedRuns runs(
        argc, argv, "Paints frames of two animated marks, ours and by Qt Quick's software renderer in turn.");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argc, argv);
    tallyforge::run(runs);
    return 0;
}
