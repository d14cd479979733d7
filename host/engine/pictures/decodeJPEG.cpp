#include <csetjmp>
#include <cstdint>
#include <cstdio>

#include <jpeglib.h>

#include "host/engine/pictures/HostImage.h"
#include "host/engine/pictures/PictureDecoder.h"
#include "host/engine/pictures/decoders.h"

namespace engine {

namespace {

// A picture of a few bytes can ask for any number of passes over all its pixels.
constexpr int mostScans = 100;

// libjpeg reports an error by a jump. The jumps land in readHeader and readRows, which hold nothing with a
// destructor; this object owns the decoder's memory around both.
class Decoder {
public:
    Decoder() {
        state_.err = jpeg_std_error(&errors_);
        errors_.error_exit = giveUp;
        errors_.emit_message = [](j_common_ptr state, int level) {
            if (level < 0) {
                giveUp(state); // every warning of libjpeg means damage
            }
        };
        errors_.output_message = [](j_common_ptr) {};
        progress_.progress_monitor = [](j_common_ptr state) {
            if (reinterpret_cast<j_decompress_ptr>(state)->input_scan_number > mostScans) {
                giveUp(state);
            }
        };
        state_.client_data = this;
    }
    ~Decoder() { jpeg_destroy_decompress(&state_); }
    Decoder(Decoder const&) = delete;
    Decoder& operator=(Decoder const&) = delete;

    bool readHeader(std::string_view bytes) {
        if (setjmp(landing_) != 0) {
            return false;
        }
        jpeg_create_decompress(&state_);
        state_.progress = &progress_;
        jpeg_mem_src(&state_, reinterpret_cast<unsigned char const*>(bytes.data()), bytes.size());
        return jpeg_read_header(&state_, TRUE) == JPEG_HEADER_OK;
    }
    [[nodiscard]] std::uint32_t width() const { return state_.image_width; }
    [[nodiscard]] std::uint32_t height() const { return state_.image_height; }

    // Fills width() * height() * 4 bytes.
    bool readRows(std::uint8_t* pixels) {
        if (setjmp(landing_) != 0) {
            return false;
        }
        bool const ink = state_.jpeg_color_space == JCS_CMYK || state_.jpeg_color_space == JCS_YCCK;
        state_.out_color_space = ink ? JCS_CMYK : JCS_EXT_RGBA;
        jpeg_start_decompress(&state_);
        std::size_t const rowBytes = std::size_t{state_.output_width} * 4;
        while (state_.output_scanline < state_.output_height) {
            JSAMPROW row = pixels + state_.output_scanline * rowBytes;
            jpeg_read_scanlines(&state_, &row, 1);
            if (ink) {
                inkToLight(row, state_.output_width, state_.saw_Adobe_marker != FALSE);
            }
        }
        return jpeg_finish_decompress(&state_) != FALSE;
    }

private:
    [[noreturn]] static void giveUp(j_common_ptr state) {
        std::longjmp(static_cast<Decoder*>(state->client_data)->landing_, 1);
    }

    // Cyan, magenta, yellow and black to red, green, blue and full opacity. Files with Adobe's mark hold the
    // inks inverted.
    static void inkToLight(std::uint8_t* row, std::uint32_t count, bool inverted) {
        for (std::uint8_t* pixel = row; pixel != row + std::size_t{count} * 4; pixel += 4) {
            unsigned const black = inverted ? pixel[3] : 255U - pixel[3];
            for (int i = 0; i < 3; ++i) {
                unsigned const light = inverted ? pixel[i] : 255U - pixel[i];
                pixel[i] = static_cast<std::uint8_t>(light * black / 255U);
            }
            pixel[3] = 255;
        }
    }

    jpeg_decompress_struct state_{};
    jpeg_error_mgr errors_{};
    jpeg_progress_mgr progress_{};
    std::jmp_buf landing_{};
};

} // namespace

Zq::Ptr<iHostImage> decodeJPEG(std::string_view bytes) {
    Decoder decoder;
    if (!decoder.readHeader(bytes)) {
        return {};
    }
    std::uint32_t const width = decoder.width();
    std::uint32_t const height = decoder.height();
    if (width > largestSide_px || height > largestSide_px ||
        std::uint64_t{width} * height > largestPicture_px) {
        return {};
    }
    std::vector<std::uint8_t> pixels(std::size_t{width} * height * 4);
    if (!decoder.readRows(pixels.data())) {
        return {};
    }
    return Zq::makeShared<HostImage>(width, height, std::move(pixels));
}

} // namespace engine
