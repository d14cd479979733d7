// The patience of streaming, its bounds, and its clock.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>

namespace engine {

struct StreamingOptions {
    std::chrono::milliseconds connectTimeout{10'000};
    std::chrono::milliseconds stallTimeout{15'000}; // a transfer to which no byte comes for so long ends
    // What was compared with the server so long ago at most counts as unchanged.
    std::chrono::seconds trustTime{60};
    std::size_t memoryStore_bytes = std::size_t{8} << 20; // of a file without a store on disk
    std::function<std::int64_t()> now_s = [] { return std::int64_t{std::time(nullptr)}; }; // Unix seconds
};

} // namespace engine
