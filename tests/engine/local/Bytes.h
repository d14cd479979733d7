// Files of a test, read and written as they are.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace test {

inline void writeBytes(std::filesystem::path const& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

inline std::string readBytes(std::filesystem::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace test
