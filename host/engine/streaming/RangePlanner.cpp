#include "host/engine/streaming/RangePlanner.h"

#include <algorithm>
#include <optional>

namespace engine {

namespace {

class Planner {
public:
    Planner(std::uint64_t total, std::span<RunningRange const> running, std::span<ReadNeed const> needs,
            Presence const& presence, std::size_t room)
        : total_(total), running_(running), needs_(needs), presence_(presence), room_(room),
          joined_(running.size()), left_(running.size()) {}

    RangePlan plan() {
        leaveWhatIsOfNoUse();
        for (std::size_t reader = 0; reader < needs_.size(); ++reader) {
            if (!needs_[reader].want.isEmpty() && !join(needs_[reader].want.begin)) {
                askFor(reader);
            }
        }
        makeRoom();
        for (std::size_t reader = 0; reader < needs_.size(); ++reader) {
            if (needs_[reader].piece_bytes != 0) {
                askAhead(reader);
            }
        }
        if (plan_.start.size() > room_) {
            plan_.start.resize(room_);
            plan_.starved = true;
        }
        for (std::size_t i = 0; i < left_.size(); ++i) {
            if (left_[i]) {
                plan_.abort.push_back(i);
            }
        }
        return std::move(plan_);
    }

private:
    [[nodiscard]] static bool isNear(ByteRange rest, std::uint64_t position) {
        return rest.contains(position) && position - rest.begin <= PlanLimits::join_bytes;
    }

    // What a reader may want soon.
    [[nodiscard]] static ByteRange interest(ReadNeed const& need) {
        std::uint64_t const begin = need.want.isEmpty() ? need.position : need.want.begin;
        return {begin, std::max(need.want.end, need.position + need.window_bytes)};
    }

    [[nodiscard]] static bool isUseful(ByteRange rest, ReadNeed const& need) {
        ByteRange const wanted = interest(need);
        return rest.meets(wanted) && rest.begin + PlanLimits::join_bytes >= wanted.begin;
    }

    void leave(std::size_t running) {
        left_[running] = true;
        ++room_;
    }

    void leaveWhatIsOfNoUse() {
        for (std::size_t i = 0; i < running_.size(); ++i) {
            ByteRange const rest = running_[i].rest;
            auto const wanted = [rest](ReadNeed const& need) { return isUseful(rest, need); };
            if (!running_[i].keep && rest.size() > PlanLimits::finish_bytes &&
                std::ranges::none_of(needs_, wanted)) {
                leave(i);
            }
        }
    }

    bool join(std::uint64_t position) {
        bool found = false;
        for (std::size_t i = 0; i < running_.size(); ++i) {
            if (!left_[i] && isNear(running_[i].rest, position)) {
                joined_[i] = true;
                found = true;
            }
        }
        auto const starts = [position](PlannedRange const& planned) {
            return isNear(planned.range, position);
        };
        return found || std::ranges::any_of(plan_.start, starts);
    }

    // Under way already, and not too far off for this reader.
    [[nodiscard]] bool isUnderWay(std::uint64_t block, ReadNeed const& need) const {
        ByteRange const bytes = bytesOfBlock(block, total_);
        for (std::size_t i = 0; i < running_.size(); ++i) {
            if (!left_[i] && running_[i].rest.meets(bytes) && isUseful(running_[i].rest, need)) {
                return true;
            }
        }
        return std::ranges::any_of(
            plan_.start, [bytes](PlannedRange const& planned) { return planned.range.meets(bytes); });
    }

    // The first run of missing bytes in the range, up to `most` long; nothing where none is missing.
    [[nodiscard]] std::optional<ByteRange> firstRun(ByteRange range, std::uint64_t most,
                                                    ReadNeed const& need) const {
        range.end = std::min(range.end, total_);
        if (range.isEmpty()) {
            return std::nullopt;
        }
        std::uint64_t const first = blockOf(range.begin);
        std::uint64_t const last = blockOf(range.end - 1);
        std::vector<bool> const present = presence_(first, static_cast<std::size_t>(last - first + 1));
        std::optional<ByteRange> run;
        for (std::uint64_t block = first; block <= last; ++block) {
            ByteRange const bytes = bytesOfBlock(block, total_);
            bool const underWay = isUnderWay(block, need);
            if (underWay && run) {
                break;
            }
            if (underWay || present[static_cast<std::size_t>(block - first)]) {
                continue;
            }
            if (run &&
                (bytes.begin - run->end > PlanLimits::mergedGap_bytes || bytes.end - run->begin > most)) {
                break;
            }
            run = run ? ByteRange{run->begin, bytes.end} : bytes;
        }
        return run;
    }

    void askFor(std::size_t reader) {
        ReadNeed const& need = needs_[reader];
        // A reader that goes through the file gets what comes next along with what it waits for.
        ByteRange range = need.want;
        range.end = std::max(range.end, range.begin + need.piece_bytes);
        range.end = std::min({range.end, range.begin + PlanLimits::largestRequest_bytes, total_});
        std::optional<ByteRange> const run = firstRun(range, PlanLimits::largestRequest_bytes, need);
        if (run && !mergeInto(*run)) {
            plan_.start.push_back({*run, reader, need.piece_bytes != 0});
        }
    }

    // What two readers want close together is one request.
    bool mergeInto(ByteRange run) {
        for (PlannedRange& planned : plan_.start) {
            ByteRange const both{std::min(planned.range.begin, run.begin),
                                 std::max(planned.range.end, run.end)};
            if (both.size() <= PlanLimits::largestRequest_bytes &&
                both.size() <= planned.range.size() + run.size() + PlanLimits::mergedGap_bytes) {
                planned.range = both;
                return true;
            }
        }
        return false;
    }

    // Those who wait come before what nobody waits for.
    void makeRoom() {
        while (plan_.start.size() > room_) {
            std::optional<std::size_t> longest;
            for (std::size_t i = 0; i < running_.size(); ++i) {
                std::uint64_t const rest = running_[i].rest.size();
                if (!left_[i] && !joined_[i] && rest > PlanLimits::finish_bytes &&
                    (!longest || rest > running_[*longest].rest.size())) {
                    longest = i;
                }
            }
            if (!longest) {
                return;
            }
            leave(*longest);
        }
    }

    void askAhead(std::size_t reader) {
        ReadNeed const& need = needs_[reader];
        ByteRange const window{need.want.isEmpty() ? need.position : need.want.end,
                               std::min(need.position + need.window_bytes, total_)};
        std::uint64_t underWay = 0;
        for (std::size_t i = 0; i < running_.size(); ++i) {
            if (!left_[i] && isUseful(running_[i].rest, need)) {
                underWay += running_[i].rest.size();
            }
        }
        for (PlannedRange const& planned : plan_.start) {
            underWay += planned.range.meets(window) ? planned.range.size() : 0;
        }
        std::uint64_t const piece = std::min(need.piece_bytes, need.window_bytes / 2);
        if (underWay > piece / 2) {
            return;
        }
        std::optional<ByteRange> const run = firstRun(window, piece, need);
        // No small requests at the far end of the window: it goes on moving.
        if (run && (run->size() >= piece || run->end >= total_ || run->begin < window.begin + piece)) {
            plan_.start.push_back({*run, reader, true});
        }
    }

    std::uint64_t const total_;
    std::span<RunningRange const> const running_;
    std::span<ReadNeed const> const needs_;
    Presence const& presence_;
    std::size_t room_;
    std::vector<bool> joined_; // a waiting reader joins it
    std::vector<bool> left_;
    RangePlan plan_;
};

} // namespace

RangePlan planRanges(std::uint64_t total, std::span<RunningRange const> running,
                     std::span<ReadNeed const> needs, Presence const& presence, std::size_t room) {
    return Planner(total, running, needs, presence, room).plan();
}

} // namespace engine
