// When the list of what is owned is looked at for one purchase, and how long it may keep silent.
#pragma once

#include <algorithm>
#include <chrono>
#include <iterator>

namespace zq {

// After 2, 4, 8, 16 and then every 30 seconds, and once when the watch is over; every 30 seconds from then
// on, for as long as no look has succeeded. A value.
class PurchaseWatch {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds longest = std::chrono::minutes(30);
    // The same where the service has ended its work on the order, and only its list may come late.
    static constexpr std::chrono::seconds afterAnswer = std::chrono::minutes(2);
    // What is left at least of a watch that goes on in another run of the program.
    static constexpr std::chrono::seconds shortest = std::chrono::minutes(1);

    explicit PurchaseWatch(Clock::time_point now, std::chrono::seconds length = longest)
        : began_(now), length_(length) {}

    // Of an order that was sent so long ago. A clock that was set back counts as no time at all.
    [[nodiscard]] static std::chrono::seconds lengthLeft(std::chrono::seconds age,
                                                         std::chrono::seconds length = longest) {
        return std::clamp(length - std::max(age, std::chrono::seconds(0)), shortest, length);
    }

    [[nodiscard]] Clock::time_point next() const {
        std::chrono::seconds const planned = plan(looks_);
        bool const isLast = planned > length_ && (looks_ == 0 || plan(looks_ - 1) < length_);
        return began_ + (isLast ? length_ : planned);
    }
    // One look was begun: the next is behind that moment.
    void moveOn(Clock::time_point now) {
        do {
            ++looks_;
        } while (next() <= now);
    }
    // A list that was asked for at that moment decides.
    [[nodiscard]] bool isOver(Clock::time_point asked) const { return asked >= began_ + length_; }

private:
    static std::chrono::seconds plan(int look) {
        constexpr int first[] = {2, 4, 8, 16};
        constexpr int later = 30;
        constexpr int count = std::size(first);
        return std::chrono::seconds(look < count ? first[look]
                                                 : first[count - 1] + later * (look + 1 - count));
    }

    Clock::time_point began_;
    std::chrono::seconds length_;
    int looks_ = 0;
};

} // namespace zq
