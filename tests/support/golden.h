// Texts byte for byte, as files that a person can read. Each file holds one text and a line end.
//
// With ZQ_WRITE_GOLDEN set in the environment a file that differs is written anew, and its test fails all the
// same: the new text is for a person to look at.
#pragma once

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace test {

inline void expectGolden(std::string const& path, std::string const& text) {
    std::ifstream file(path, std::ios::binary);
    std::string const golden{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    EXPECT_EQ(text + "\n", golden) << path;
    if (std::getenv("ZQ_WRITE_GOLDEN") != nullptr) {
        if (text + "\n" != golden) {
            std::ofstream(path, std::ios::binary) << text << '\n';
        }
        FAIL() << "texts that differed were written; look at them and run without ZQ_WRITE_GOLDEN";
    }
}

} // namespace test
