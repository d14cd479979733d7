#include "host/engine/pictures/PictureDecoder.h"

#include "host/engine/files/LocalPath.h"
#include "host/engine/files/WholeFile.h"
#include "host/engine/pictures/decoders.h"

namespace engine {

Zq::Ptr<iHostImage> PictureDecoder::decodeFile(WideString const& path) {
    std::optional<std::string> const bytes = readWholeFile(localPath(path), largestPictureFile_bytes);
    return bytes ? decode(*bytes) : Zq::Ptr<iHostImage>();
}

Zq::Ptr<iHostImage> PictureDecoder::decode(std::string_view bytes) const {
    if (bytes.starts_with("\xff\xd8\xff")) {
        return decodeJPEG(bytes);
    }
    if (bytes.starts_with("\x89PNG\r\n\x1a\n")) {
        return decodePNG(bytes);
    }
    return {};
}

} // namespace engine
