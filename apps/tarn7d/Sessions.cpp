#include "apps/tarn7d/Sessions.h"

#include <algorithm>
#include <stdexcept>

#include <openssl/rand.h>

namespace tarn7d {

namespace {

std::int32_t randomNumber() {
    std::uint32_t bits = 0;
    do {
        if (RAND_bytes(reinterpret_cast<unsigned char*>(&bits), sizeof bits) != 1) {
            throw std::runtime_error("no random numbers");
        }
        bits &= 0x7fffffff;
    } while (bits == 0);
    return static_cast<std::int32_t>(bits);
}

} // namespace

Sessions::Sessions(Clock clock) : clock_(std::move(clock)) {}

SessionKey Sessions::open(std::int64_t accountId) {
    std::lock_guard const lock(mutex_);
    if (sessions_.size() >= mostSessions) {
        dropOldest();
    }
    for (;;) {
        SessionKey const key{randomNumber(), randomNumber()};
        if (sessions_.try_emplace(key, Session{accountId, clock_()}).second) {
            return key;
        }
    }
}

void Sessions::dropOldest() {
    auto const oldest =
        std::min_element(sessions_.begin(), sessions_.end(),
                         [](auto const& a, auto const& b) { return a.second.lastUse < b.second.lastUse; });
    if (oldest != sessions_.end()) {
        sessions_.erase(oldest);
    }
}

void Sessions::close(SessionKey key) {
    std::lock_guard const lock(mutex_);
    sessions_.erase(key);
}

std::optional<std::int64_t> Sessions::account(SessionKey key) {
    std::lock_guard const lock(mutex_);
    auto const session = sessions_.find(key);
    if (session == sessions_.end()) {
        return std::nullopt;
    }
    auto const now = clock_();
    if (now - session->second.lastUse > idleLimit) {
        sessions_.erase(session);
        return std::nullopt;
    }
    session->second.lastUse = now;
    return session->second.accountId;
}

SignInThrottle::SignInThrottle(Clock clock) : clock_(std::move(clock)) {}

std::chrono::seconds SignInThrottle::waitFor(std::string_view name) {
    std::lock_guard const lock(mutex_);
    auto const record = records_.find(name);
    if (record == records_.end()) {
        return std::chrono::seconds(0);
    }
    auto const wait = std::chrono::ceil<std::chrono::seconds>(record->second.freeAgain - clock_());
    return std::max(wait, std::chrono::seconds(0));
}

void SignInThrottle::noteFailure(std::string_view name) {
    std::lock_guard const lock(mutex_);
    auto const now = clock_();
    if (records_.size() >= mostNames && records_.find(name) == records_.end()) {
        std::erase_if(records_, [now](auto const& entry) { return entry.second.freeAgain <= now; });
        if (records_.size() >= mostNames) {
            records_.erase(records_.begin());
        }
    }
    Record& record = records_[std::string(name)];
    ++record.failures;
    record.freeAgain = now;
    if (record.failures > freeFailures - 1) {
        int const doublings = std::min(record.failures - freeFailures, 6);
        record.freeAgain += std::min(std::chrono::seconds(1 << doublings), longestWait);
    }
}

void SignInThrottle::noteSuccess(std::string_view name) {
    std::lock_guard const lock(mutex_);
    if (auto const record = records_.find(name); record != records_.end()) {
        records_.erase(record);
    }
}

} // namespace tarn7d
