#include "host/engine/streaming/indexInFront.h"

#include <cstdint>

namespace engine {

namespace {

std::uint64_t bigEndian(std::string_view bytes) noexcept {
    std::uint64_t value = 0;
    for (char const byte : bytes) {
        value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
}

} // namespace

bool indexStandsInFront(std::string_view bytes) noexcept {
    while (bytes.size() >= 16) {
        std::string_view const type = bytes.substr(4, 4);
        if (type == "moov" || type == "mdat") {
            return type == "moov";
        }
        std::uint64_t size = bigEndian(bytes.substr(0, 4));
        if (size == 1) {
            size = bigEndian(bytes.substr(8, 8));
        }
        if (size < 8 || size > bytes.size()) {
            break;
        }
        bytes.remove_prefix(static_cast<std::size_t>(size));
    }
    return false;
}

} // namespace engine
