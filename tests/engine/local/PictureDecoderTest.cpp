#include "host/engine/pictures/PictureDecoder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include <jpeglib.h>

#include "host/engine/files/LocalPath.h"
#include "host/engine/pictures/HostImage.h"
#include "tests/engine/local/Bytes.h"
#include "tests/support/TemporaryFolder.h"

namespace {

struct JpegOptions {
    int channels = 3;
    bool progressive = false;
    bool adobe = false;
};

// A picture of one colour, as another program would write it.
std::string encodeJPEG(unsigned width, unsigned height, std::vector<unsigned char> const& pixel,
                       JpegOptions options) {
    jpeg_compress_struct state{};
    jpeg_error_mgr errors{};
    state.err = jpeg_std_error(&errors);
    jpeg_create_compress(&state);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&state, &bytes, &size);
    state.image_width = width;
    state.image_height = height;
    state.input_components = options.channels;
    state.in_color_space = options.channels == 1 ? JCS_GRAYSCALE : options.channels == 4 ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&state);
    state.write_Adobe_marker = options.adobe ? TRUE : FALSE;
    jpeg_set_quality(&state, 95, TRUE);
    if (options.progressive) {
        jpeg_simple_progression(&state);
    }
    jpeg_start_compress(&state, TRUE);
    std::vector<unsigned char> row;
    for (unsigned x = 0; x < width; ++x) {
        row.insert(row.end(), pixel.begin(), pixel.end());
    }
    JSAMPROW rows[] = {row.data()};
    while (state.next_scanline < height) {
        jpeg_write_scanlines(&state, rows, 1);
    }
    jpeg_finish_compress(&state);
    jpeg_destroy_compress(&state);
    std::string result(reinterpret_cast<char*>(bytes), size);
    std::free(bytes);
    return result;
}

void expectColour(Zq::Ptr<iHostImage> const& image, int red, int green, int blue) {
    ASSERT_TRUE(image);
    std::size_t const last = std::size_t{image->getWidth()} * image->getHeight() - 1;
    for (std::size_t const at : {std::size_t{0}, last / 2, last}) {
        std::uint8_t const* const pixel = image->getPixels() + at * 4;
        EXPECT_NEAR(pixel[0], red, 3);
        EXPECT_NEAR(pixel[1], green, 3);
        EXPECT_NEAR(pixel[2], blue, 3);
        EXPECT_EQ(pixel[3], 255);
    }
}

// A small picture with a gradient and some transparency, as the bytes of a PNG file.
class PictureDecoder : public testing::Test {
protected:
    [[nodiscard]] static Zq::Ptr<iHostImage> gradient(std::uint32_t width, std::uint32_t height) {
        std::vector<std::uint8_t> pixels;
        for (std::uint32_t i = 0; i < width * height; ++i) {
            pixels.push_back(static_cast<std::uint8_t>(i));
            pixels.push_back(static_cast<std::uint8_t>(i * 7));
            pixels.push_back(static_cast<std::uint8_t>(i / 3));
            pixels.push_back(static_cast<std::uint8_t>(i % 2 == 0 ? 255 : 100));
        }
        return Zq::makeShared<engine::HostImage>(width, height, std::move(pixels));
    }
    [[nodiscard]] std::string png(std::uint32_t width, std::uint32_t height) const {
        std::filesystem::path const file = folder_.path() / "made.png";
        EXPECT_TRUE(engine::writePNG(*gradient(width, height), file));
        return test::readBytes(file);
    }

    test::TemporaryFolder folder_;
    engine::PictureDecoder decoder_;
};

TEST_F(PictureDecoder, ReadsAJpegFromTheTopWithFullOpacity) {
    Zq::Ptr<iHostImage> const image = decoder_.decode(encodeJPEG(33, 17, {200, 100, 50}, {}));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->getWidth(), 33U);
    EXPECT_EQ(image->getHeight(), 17U);
    expectColour(image, 200, 100, 50);
}

TEST_F(PictureDecoder, ReadsProgressiveGreyAndInkJpegs) {
    expectColour(decoder_.decode(encodeJPEG(40, 30, {10, 20, 220}, {.progressive = true})), 10, 20, 220);
    expectColour(decoder_.decode(encodeJPEG(40, 30, {77}, {.channels = 1})), 77, 77, 77);
    // No ink but cyan.
    expectColour(decoder_.decode(encodeJPEG(40, 30, {255, 0, 0, 0}, {.channels = 4})), 0, 255, 255);
    // The same, inverted as Adobe's programs write it.
    expectColour(decoder_.decode(encodeJPEG(40, 30, {0, 255, 255, 255}, {.channels = 4, .adobe = true})), 0,
                 255, 255);
}

TEST_F(PictureDecoder, APngComesBackAsItWasWritten) {
    Zq::Ptr<iHostImage> const before = gradient(31, 9);
    Zq::Ptr<iHostImage> const after = decoder_.decode(png(31, 9));
    ASSERT_TRUE(after);
    ASSERT_EQ(after->getWidth(), 31U);
    ASSERT_EQ(after->getHeight(), 9U);
    EXPECT_TRUE(std::equal(before->getPixels(), before->getPixels() + 31 * 9 * 4, after->getPixels()));
}

TEST_F(PictureDecoder, TakesTheFormatFromTheContentAndNotFromTheName) {
    test::writeBytes(folder_.path() / "picture.png", encodeJPEG(8, 8, {1, 2, 3}, {}));
    EXPECT_TRUE(decoder_.decodeFile(engine::wideText(folder_.path() / "picture.png")));
}

TEST_F(PictureDecoder, AFileThatIsNoPictureOrNotThereGivesNone) {
    test::writeBytes(folder_.path() / "empty", "");
    test::writeBytes(folder_.path() / "text", "GIF89a or some text");
    for (char const* const name : {"empty", "text", "gone", "."}) {
        EXPECT_FALSE(decoder_.decodeFile(engine::wideText(folder_.path() / name))) << name;
    }
    EXPECT_FALSE(decoder_.decodeFile(WideString()));
}

TEST_F(PictureDecoder, AJpegCutAtAnyPlaceGivesNoPicture) {
    for (bool const progressive : {false, true}) {
        std::string const whole = encodeJPEG(300, 200, {90, 80, 70}, {.progressive = progressive});
        ASSERT_TRUE(decoder_.decode(whole));
        for (std::size_t length = 0; length < whole.size(); length += 64) {
            EXPECT_FALSE(decoder_.decode(std::string_view(whole).substr(0, length))) << length;
        }
        EXPECT_FALSE(decoder_.decode(std::string_view(whole).substr(0, whole.size() - 1)));
    }
}

TEST_F(PictureDecoder, APngCutAtAnyPlaceGivesNoPicture) {
    std::string const whole = png(100, 80);
    ASSERT_TRUE(decoder_.decode(whole));
    for (std::size_t length = 0; length < whole.size(); length += 64) {
        EXPECT_FALSE(decoder_.decode(std::string_view(whole).substr(0, length))) << length;
    }
    EXPECT_FALSE(decoder_.decode(std::string_view(whole).substr(0, whole.size() - 1)));
}

TEST_F(PictureDecoder, APngWithAnyChangedByteGivesNoPictureOrAWholeOne) {
    std::string const whole = png(40, 30);
    std::size_t refused = 0;
    for (std::size_t at = 8; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x5a);
        Zq::Ptr<iHostImage> const image = decoder_.decode(damaged);
        refused += image ? 0U : 1U;
    }
    // Only a change that leaves the checked parts alone may pass.
    EXPECT_GT(refused, (whole.size() - 8) * 9 / 10);
}

TEST_F(PictureDecoder, AJpegWithAnyChangedByteDoesNotCrash) {
    std::string const whole = encodeJPEG(64, 48, {90, 80, 70}, {.progressive = true});
    for (std::size_t at = 2; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0xff);
        if (Zq::Ptr<iHostImage> const image = decoder_.decode(damaged)) {
            EXPECT_NE(image->getWidth(), 0U);
        }
    }
}

TEST_F(PictureDecoder, APictureThatAnnouncesTooManyPixelsIsNotDecoded) {
    std::string jpeg = encodeJPEG(64, 48, {90, 80, 70}, {});
    std::size_t const frame = jpeg.find("\xff\xc0");
    ASSERT_NE(frame, std::string::npos);
    for (std::string const& size : {std::string("\x40\x01\x00\x10", 4), std::string("\x30\x00\x30\x00", 4)}) {
        jpeg.replace(frame + 5, 4, size); // height and width, high byte first
        EXPECT_FALSE(decoder_.decode(jpeg));
    }
    EXPECT_TRUE(decoder_.decode(encodeJPEG(engine::largestSide_px, 1, {1, 2, 3}, {})));
    EXPECT_FALSE(decoder_.decode(encodeJPEG(engine::largestSide_px + 1, 1, {1, 2, 3}, {})));
    EXPECT_TRUE(decoder_.decode(png(engine::largestSide_px, 1)));
    EXPECT_FALSE(decoder_.decode(png(engine::largestSide_px + 1, 1)));
}

TEST_F(PictureDecoder, AFileLargerThanTheBoundIsNotRead) {
    std::filesystem::path const file = folder_.path() / "large.jpg";
    test::writeBytes(file, encodeJPEG(8, 8, {1, 2, 3}, {}));
    std::filesystem::resize_file(file, engine::largestPictureFile_bytes);
    EXPECT_TRUE(decoder_.decodeFile(engine::wideText(file))) << "what follows the picture is not read";
    std::filesystem::resize_file(file, engine::largestPictureFile_bytes + 1);
    EXPECT_FALSE(decoder_.decodeFile(engine::wideText(file)));
}

TEST_F(PictureDecoder, WritingToAPlaceThatCannotBeWrittenFails) {
    EXPECT_FALSE(engine::writePNG(*gradient(4, 4), folder_.path() / "gone" / "a.png"));
}

} // namespace
