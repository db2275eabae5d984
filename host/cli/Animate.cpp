#include "cli/Animate.h"

#include "cli/ProgressBar.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <webp/encode.h>
#include <webp/mux.h>

namespace tallyforge {

namespace {

struct EncoderDeleter {
    void operator()(WebPAnimEncoder* encoder) const { WebPAnimEncoderDelete(encoder); }
};
using Encoder = std::unique_ptr<WebPAnimEncoder, EncoderDeleter>;

Encoder MakeEncoder(int width, int height) {
    WebPAnimEncoderOptions options;
    if (!WebPAnimEncoderOptionsInit(&options)) return nullptr;
    options.anim_params.loop_count = 0; // forever
    options.kmax = 0;                   // no key frames but the first: small differences compress best
    return Encoder(WebPAnimEncoderNew(width, height, &options));
}

// Lossless at low effort: flat colours stay exact and a frame takes a few milliseconds.
bool MakeConfig(WebPConfig& config) {
    if (!WebPConfigInit(&config) || !WebPConfigLosslessPreset(&config, 1)) return false;
    return WebPValidateConfig(&config) != 0;
}

// The cell is opaque, so premultiplied pixels are plain ones.
bool AddFrame(WebPAnimEncoder& encoder, const WebPConfig& config, const CGImage& image, int milliseconds) {
    WebPPicture picture;
    if (!WebPPictureInit(&picture)) return false;
    picture.use_argb = 1;
    picture.width = image.width();
    picture.height = image.height();
    bool added = false;
    if (WebPPictureAlloc(&picture)) {
        for (int y = 0; y < image.height(); ++y)
            std::copy_n(image.row(y), image.width(), picture.argb + std::ptrdiff_t{y} * picture.argb_stride);
        added = WebPAnimEncoderAdd(&encoder, &picture, milliseconds, &config) != 0;
    }
    WebPPictureFree(&picture);
    return added;
}

} // namespace

Result<std::vector<uint8_t>> AnimatePreview(PreviewStage& stage, double seconds, double framesPerSecond) {
    auto first = stage.picture();
    if (!first) return first.error();
    WebPConfig config;
    Encoder encoder = MakeEncoder((*first)->width(), (*first)->height());
    if (!encoder || !MakeConfig(config)) return Error{"the WebP encoder cannot be started"};

    ProgressBar progress("animate");
    int frames = std::max(1, static_cast<int>(std::lround(seconds * framesPerSecond)));
    auto milliseconds = [&](int frame) {
        return static_cast<int>(std::lround(frame * 1000.0 / framesPerSecond));
    };
    for (int frame = 0; frame < frames; ++frame) {
        stage.runTo(frame / framesPerSecond);
        auto picture = frame == 0 ? first : stage.picture();
        if (!picture) return picture.error();
        if (!AddFrame(*encoder, config, **picture, milliseconds(frame)))
            return Error{std::string("WebP: ") + WebPAnimEncoderGetError(encoder.get())};
        progress.show((frame + 1.0) / frames);
    }

    WebPData data;
    WebPDataInit(&data);
    if (!WebPAnimEncoderAdd(encoder.get(), nullptr, milliseconds(frames), nullptr) ||
        !WebPAnimEncoderAssemble(encoder.get(), &data))
        return Error{std::string("WebP: ") + WebPAnimEncoderGetError(encoder.get())};
    std::vector<uint8_t> bytes(data.bytes, data.bytes + data.size);
    WebPDataClear(&data);
    return bytes;
}

} // namespace tallyforge
