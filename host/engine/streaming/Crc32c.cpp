#include "host/engine/streaming/Crc32c.h"

#include <array>
#include <bit>
#include <cstring>

namespace engine {

namespace {

constexpr std::uint32_t polynomial = 0x82f63b78;

// Eight tables take eight bytes a step: M. E. Kounavis and F. L. Berry, "A Systematic Approach to Building
// High Performance Software-Based CRC Generators", ISCC 2005.
using Tables = std::array<std::array<std::uint32_t, 256>, 8>;

constexpr Tables makeTables() {
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value >> 1) ^ ((value & 1) != 0 ? polynomial : 0);
        }
        tables[0][byte] = value;
    }
    for (std::size_t byte = 0; byte < 256; ++byte) {
        for (std::size_t table = 1; table < 8; ++table) {
            std::uint32_t const before = tables[table - 1][byte];
            tables[table][byte] = (before >> 8) ^ tables[0][before & 0xff];
        }
    }
    return tables;
}

constexpr Tables tables = makeTables();

std::uint32_t littleEndian(char const* bytes) noexcept {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    if constexpr (std::endian::native == std::endian::big) {
        value = __builtin_bswap32(value);
    }
    return value;
}

} // namespace

std::uint32_t crc32c(std::string_view bytes) noexcept {
    std::uint32_t crc = 0xffffffff;
    while (bytes.size() >= 8) {
        std::uint32_t const low = crc ^ littleEndian(bytes.data());
        std::uint32_t const high = littleEndian(bytes.data() + 4);
        crc = tables[7][low & 0xff] ^ tables[6][(low >> 8) & 0xff] ^ tables[5][(low >> 16) & 0xff] ^
              tables[4][low >> 24] ^ tables[3][high & 0xff] ^ tables[2][(high >> 8) & 0xff] ^
              tables[1][(high >> 16) & 0xff] ^ tables[0][high >> 24];
        bytes.remove_prefix(8);
    }
    for (char const byte : bytes) {
        crc = (crc >> 8) ^ tables[0][(crc ^ static_cast<unsigned char>(byte)) & 0xff];
    }
    return ~crc;
}

} // namespace engine
