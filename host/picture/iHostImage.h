// A picture in memory.
#pragma once

#include <cstdint>

#include "host/object/Ptr.h"
#include "host/text/LightweightString.h"

class ZQ_API iHostImage : public virtual iObject {
public:
    ~iHostImage() override;
    [[nodiscard]] virtual std::uint32_t getWidth() const noexcept = 0;
    [[nodiscard]] virtual std::uint32_t getHeight() const noexcept = 0;
    // Rows from the top, each getWidth() pixels of red, green, blue and opacity, one byte each, no padding.
    [[nodiscard]] virtual std::uint8_t const* getPixels() const noexcept = 0;
};

class ZQ_API iImageDecoder {
public:
    virtual ~iImageDecoder();
    // The picture of a JPEG or PNG file; null for any other, a damaged or an oversized one. Thread: any.
    [[nodiscard]] virtual Zq::Ptr<iHostImage> decodeFile(WideString const& path) = 0;
};
