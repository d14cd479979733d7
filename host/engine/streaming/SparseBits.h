// A set of numbers that lie in clusters, at a bit for each.
#pragma once

#include <bitset>
#include <cstdint>
#include <unordered_map>

namespace engine {

class SparseBits {
public:
    [[nodiscard]] bool has(std::uint64_t number) const {
        auto const found = pages_.find(number / pageBits);
        return found != pages_.end() && found->second[number % pageBits];
    }
    void add(std::uint64_t number) { pages_[number / pageBits].set(number % pageBits); }
    void remove(std::uint64_t number) {
        if (auto const found = pages_.find(number / pageBits); found != pages_.end()) {
            found->second.reset(number % pageBits);
        }
    }
    void clear() noexcept { pages_.clear(); }

private:
    static constexpr std::size_t pageBits = 4096;
    std::unordered_map<std::uint64_t, std::bitset<pageBits>> pages_;
};

} // namespace engine
