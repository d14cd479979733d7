#include "host/engine/project/PictureColumns.h"

namespace engine {

RowWriter& operator<<(RowWriter& row, ShotVideoMetadata const& picture) {
    return row << picture.uid << picture.dataFormat << picture.anamorphic << picture.scanMode
               << picture.aspectRatio << picture.hasScanAndAspect << picture.frameRate << picture.hasFrameRate
               << picture.width << picture.height << picture.bitDepth << picture.bitsPerPixel
               << picture.hasSize << picture.rowAlignment << picture.rowBytes << picture.hasRowBytes;
}

RowReader& operator>>(RowReader& row, ShotVideoMetadata& picture) {
    return row >> picture.uid >> picture.dataFormat >> picture.anamorphic >> picture.scanMode >>
           picture.aspectRatio >> picture.hasScanAndAspect >> picture.frameRate >> picture.hasFrameRate >>
           picture.width >> picture.height >> picture.bitDepth >> picture.bitsPerPixel >> picture.hasSize >>
           picture.rowAlignment >> picture.rowBytes >> picture.hasRowBytes;
}

} // namespace engine
