// animate: the preview as an animated WebP file, read back by the library's own decoder.

#include "CommandFixture.h"

#include <memory>
#include <webp/demux.h>

namespace tallyforge::test {

class AnimateTest : public CommandTest {
  protected:
    struct Deleter {
        void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
    };
    std::unique_ptr<WebPAnimDecoder, Deleter> open(const std::string& bytes) const {
        WebPData data{reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()};
        return std::unique_ptr<WebPAnimDecoder, Deleter>(WebPAnimDecoderNew(&data, nullptr));
    }
};

TEST_F(AnimateTest, HasTheFramesAndTheTimesAskedFor) {
    device.furnish();
    ASSERT_EQ(tallyforge({"set", "badgeanimtype", "1", "badgeanimspd", "1"}).status, 0);
    std::string file = (device.root() / "out.webp").string();
    Ended ended = tallyforge({"animate", file, "--seconds", "0.5", "--fps", "10", "--scale", "1"});
    ASSERT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, ""); // no progress bar where there is no terminal

    std::string bytes = bytesOf(file);
    auto decoder = open(bytes);
    ASSERT_TRUE(decoder);
    WebPAnimInfo info;
    ASSERT_TRUE(WebPAnimDecoderGetInfo(decoder.get(), &info));
    EXPECT_EQ(info.canvas_width, 375U);
    EXPECT_EQ(info.canvas_height, 150U);
    EXPECT_EQ(info.loop_count, 0U);
    EXPECT_EQ(info.frame_count, 5U);
    uint8_t* frame = nullptr;
    int timestamp = 0;
    std::vector<std::vector<uint8_t>> frames;
    while (WebPAnimDecoderHasMoreFrames(decoder.get()) &&
           WebPAnimDecoderGetNext(decoder.get(), &frame, &timestamp))
        frames.emplace_back(frame, frame + size_t{375} * 150 * 4);
    EXPECT_EQ(timestamp, 500);
    ASSERT_EQ(frames.size(), 5U);
    EXPECT_NE(frames[0], frames[1]); // it spins
    const uint8_t* corner = frames[0].data();
    EXPECT_EQ(corner[0] + corner[1] + corner[2] + corner[3], 4 * 255); // the white cell
}

TEST_F(AnimateTest, AFailedWriteIsSaid) {
    expectComplaint(tallyforge({"animate", (device.root() / "no/folder.webp").string(), "--seconds", "0.1"}),
                    1);
}

} // namespace tallyforge::test
