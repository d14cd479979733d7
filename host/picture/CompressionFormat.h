// How a picture is compressed: by which codec, and to how many bits a second. A value. Thread: any.
#pragma once

#include <cstdint>

#include "host/picture/ImageFormat.h"
#include "host/text/LightweightString.h"

class ZQ_API CompressionFormat {
public:
    CompressionFormat() = default;
    // A rate of 0 is not known.
    CompressionFormat(Zq::Image::Format format, double bitsPerSecond) noexcept;

    // Below 0 counts as not known.
    void setBitRate(std::int64_t bitsPerSecond) noexcept;
    [[nodiscard]] std::int64_t getBitRate() const noexcept { return bitsPerSecond_; }
    [[nodiscard]] Zq::Image::Format getFormat() const noexcept { return format_; }

    // The codec as a person calls it: "H.264". Of one that has no name here its four characters, blanks at
    // the end left out, or where they cannot be read its number: "0x01020304". Empty for the unknown format
    // and for 0.
    [[nodiscard]] NarrowString codecName() const;
    // "8.5 Mbit/s", "640 kbit/s"; empty where the rate is not known.
    [[nodiscard]] NarrowString bitRateText() const;

private:
    Zq::Image::Format format_ = Zq::Image::Format::unknown;
    std::int64_t bitsPerSecond_ = 0;
};
