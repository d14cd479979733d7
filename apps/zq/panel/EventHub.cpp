#include "apps/zq/panel/EventHub.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>

namespace zq::panel {

namespace {

using Clock = std::chrono::steady_clock;

// A comment keeps what lies between the program and the page from taking the stream for dead.
constexpr std::chrono::seconds silence{15};
constexpr std::chrono::seconds patience{1};
// What one call hands over at most, so that a page that was away long does not make one block of it all.
constexpr std::size_t mostAtOnce_bytes = std::size_t{256} << 10;

struct Event {
    std::string name;
    std::string data;
};

std::uint64_t firstNumber() {
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

void write(std::string& stream, std::uint64_t number, std::string_view name, std::string_view data) {
    stream += "id: " + std::to_string(number) + "\nevent: ";
    stream += name;
    stream += "\ndata: ";
    stream += data;
    stream += "\n\n";
}

} // namespace

class EventHub::Implementation {
public:
    void send(std::string_view name, std::string data) {
        // A line end would end the event's data.
        std::ranges::replace_if(
            data, [](char c) { return c == '\n' || c == '\r'; }, ' ');
        {
            std::lock_guard const lock(mutex_);
            events_.push_back({std::string(name), std::move(data)});
            ++last_;
            if (events_.size() > kept) {
                events_.pop_front();
            }
        }
        wake_.notify_all();
    }

    [[nodiscard]] std::uint64_t last() const {
        std::lock_guard const lock(mutex_);
        return last_;
    }

    void end() {
        {
            std::lock_guard const lock(mutex_);
            ended_ = true;
        }
        wake_.notify_all();
    }

    // The place of one listener in the order of events.
    struct Place {
        std::uint64_t stream = 0; // its number among the streams
        std::uint64_t seen = 0;
        bool reset = false; // something is lost: to be told first
        Clock::time_point spoke = Clock::now();
    };

    [[nodiscard]] Place placeBehind(std::uint64_t number) {
        Place place;
        {
            std::lock_guard const lock(mutex_);
            place.seen = number == 0 ? last_ : number;
            place.reset = isLost(place.seen);
            place.stream = ++lastStream_;
            streams_.insert(place.stream);
            if (streams_.size() > mostStreams) {
                streams_.erase(streams_.begin());
            }
        }
        wake_.notify_all();
        return place;
    }
    [[nodiscard]] bool isHeard() const {
        std::lock_guard const lock(mutex_);
        return !streams_.empty();
    }
    void leave(Place const& place) {
        std::lock_guard const lock(mutex_);
        streams_.erase(place.stream);
    }

    [[nodiscard]] bool next(Place& place, std::string& piece) {
        piece.clear();
        std::unique_lock lock(mutex_);
        auto const isOver = [&] { return ended_ || !streams_.contains(place.stream); };
        wake_.wait_for(lock, patience, [&] { return isOver() || place.reset || place.seen != last_; });
        if (isOver()) {
            return false;
        }
        // A listener that is slower than the events come has lost some of them too.
        if (place.reset || isLost(place.seen)) {
            place.seen = last_;
            place.reset = false;
            write(piece, last_, "reset", "null");
        }
        while (place.seen != last_ && piece.size() < mostAtOnce_bytes) {
            Event const& event = events_[events_.size() - static_cast<std::size_t>(last_ - place.seen)];
            write(piece, ++place.seen, event.name, event.data);
        }
        Clock::time_point const now = Clock::now();
        if (piece.empty() && now - place.spoke >= silence) {
            piece = ":\n\n";
        }
        place.spoke = piece.empty() ? place.spoke : now;
        return true;
    }

private:
    [[nodiscard]] bool isLost(std::uint64_t seen) const {
        return seen > last_ || last_ - seen > events_.size();
    }

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Event> events_; // the last of them has the number last_
    // Begins where no earlier run has come to, so that a page of that run is not taken for one that was away.
    std::uint64_t last_ = firstNumber();
    std::set<std::uint64_t> streams_; // those that have not ended
    std::uint64_t lastStream_ = 0;
    bool ended_ = false;
};

namespace {

template <class Hub>
class Stream final : public LiveText {
public:
    Stream(std::shared_ptr<Hub> hub, std::uint64_t behind)
        : hub_(std::move(hub)), place_(hub_->placeBehind(behind)) {}
    ~Stream() override { hub_->leave(place_); }
    Stream(Stream const&) = delete;
    Stream& operator=(Stream const&) = delete;

    bool next(std::string& piece) override { return hub_->next(place_, piece); }

private:
    std::shared_ptr<Hub> const hub_;
    typename Hub::Place place_;
};

} // namespace

EventHub::EventHub() : implementation_(std::make_shared<Implementation>()) {}

EventHub::~EventHub() {
    end();
}

void EventHub::send(std::string_view event, std::string data) {
    implementation_->send(event, std::move(data));
}

std::uint64_t EventHub::last() const {
    return implementation_->last();
}

std::shared_ptr<LiveText> EventHub::listen(std::uint64_t behind) {
    return std::make_shared<Stream<Implementation>>(implementation_, behind);
}

bool EventHub::isHeard() const {
    return implementation_->isHeard();
}

void EventHub::end() {
    implementation_->end();
}

} // namespace zq::panel
