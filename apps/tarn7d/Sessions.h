// Who is signed in: pairs of numbers that a client shows with each request, and how often a sign-in may be
// tried.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tarn7d {

using Clock = std::function<std::chrono::steady_clock::time_point()>;

// The pair that names a session. Both are positive and fit in 31 bits, as the client keeps signed 32-bit
// numbers; it writes -1 for none.
struct SessionKey {
    std::int32_t context = -1; // "cx", "apicx"
    std::int32_t marker = -1;  // "cm", "apicm"

    friend auto operator<=>(SessionKey const&, SessionKey const&) = default;
};

// The sessions of a running service; they end with it. Any thread.
class Sessions {
public:
    static constexpr std::chrono::hours idleLimit{12};
    static constexpr std::size_t mostSessions = 10000;

    explicit Sessions(Clock clock = std::chrono::steady_clock::now);

    // A new session of the account; others of the same account go on. The one that was idle longest ends when
    // there are too many. Throws std::runtime_error when there are no random numbers.
    [[nodiscard]] SessionKey open(std::int64_t accountId);
    void close(SessionKey key);
    // The account of the session, which counts as used now; empty if there is none or it was idle too long.
    [[nodiscard]] std::optional<std::int64_t> account(SessionKey key);

private:
    struct Session {
        std::int64_t accountId = 0;
        std::chrono::steady_clock::time_point lastUse;
    };
    void dropOldest();

    Clock clock_;
    std::mutex mutex_;
    std::map<SessionKey, Session> sessions_;
};

// Slows the guessing of passwords: after five failures in a row a name must wait a second, and twice as long
// after each further failure, up to a minute. Nobody else waits. Any thread.
class SignInThrottle {
public:
    static constexpr int freeFailures = 5;
    static constexpr std::chrono::seconds longestWait{60};
    static constexpr std::size_t mostNames = 10000;

    explicit SignInThrottle(Clock clock = std::chrono::steady_clock::now);

    // How long the name has to wait; zero if it may try now.
    [[nodiscard]] std::chrono::seconds waitFor(std::string_view name);
    void noteFailure(std::string_view name);
    void noteSuccess(std::string_view name);

private:
    struct Record {
        int failures = 0;
        std::chrono::steady_clock::time_point freeAgain;
    };

    Clock clock_;
    std::mutex mutex_;
    std::map<std::string, Record, std::less<>> records_;
};

} // namespace tarn7d
