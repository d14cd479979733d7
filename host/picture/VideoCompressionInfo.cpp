#include "host/picture/VideoCompressionInfo.h"

#include "host/text/Numbers.h"

void VideoCompressionInfo::setInputImageFormat(ShotVideoMetadata const& metadata) noexcept {
    width_ = metadata.width;
    height_ = metadata.height;
    compression_ = CompressionFormat(metadata.dataFormat, 0);
}

NarrowString VideoCompressionInfo::asString(int) const {
    NarrowString text = compression_.codecName();
    if (width_ > 0 && height_ > 0) {
        text += text.isEmpty() ? "" : " ";
        Zq::appendInteger(text, width_);
        text += 'x';
        Zq::appendInteger(text, height_);
    }
    if (NarrowString const rate = compression_.bitRateText(); !rate.isEmpty()) {
        text += text.isEmpty() ? "" : ", ";
        text += rate;
    }
    return text;
}
