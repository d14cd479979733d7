// The built programs on a road that somebody cuts off: the service as a process of its own, and shells of the
// host program that are killed.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "apps/tarn7d/Accounts.h"
#include "tests/zq/EmbeddedService.h"

namespace road_tests {

// Of one shell: the answers that it gave before its end, and how long each took.
struct ShellRun {
    std::vector<std::string> answers;
    std::vector<std::chrono::microseconds> times;
    bool killed = false; // the shell
};

// Who is killed when: so long behind so many answers of the shell.
struct KillMoment {
    enum class Who { shell, service };
    Who who = Who::shell;
    std::size_t answers = 0;
    std::chrono::microseconds delay{0};
};

struct Piece {
    std::int64_t in = 0;
    std::int64_t out = 0;
    std::int64_t start = 0;
    std::int64_t length = 0;
    [[nodiscard]] bool operator==(Piece const&) const = default;
};
void PrintTo(Piece const& piece, std::ostream* out);

// Clips "red car" and "sea", large enough that their transfers take a while.
class KillFixture : public zq_tests::Service {
protected:
    static constexpr std::int64_t credits = 1000;

    KillFixture();

    // At the same address each time.
    void startService();
    void killService();
    // Adds an account that has all these credits.
    void addAccount(std::string const& user);
    // Any moment within what the step behind so many answers takes, and a little more.
    [[nodiscard]] KillMoment momentIn(ShellRun const& measure, std::size_t step);

    // A signed-in shell on these lines, with what is killed at that moment, if anything.
    [[nodiscard]] ShellRun runShell(std::string const& user, std::vector<std::string> const& lines,
                                    KillMoment const* kill = nullptr);

    // What the service has written down.
    [[nodiscard]] std::int64_t creditsOf(std::string const& user);
    [[nodiscard]] std::int64_t creditsPaidBy(std::string const& user);
    [[nodiscard]] std::size_t countOwnedBy(std::string const& user);
    // What the host has written down of orders in doubt, and half an hour for them.
    [[nodiscard]] bool hasDoubt() const;
    void passHalfAnHour() const;
    // The host's preferences by key, and whether a database of the home folder is sound.
    [[nodiscard]] std::map<std::string, std::string> preferences() const;
    [[nodiscard]] static bool isSound(std::filesystem::path const& database);

    [[nodiscard]] std::filesystem::path mediaFolder() const;
    // Files of the media folder that are not, byte for byte, the footage of their clip.
    [[nodiscard]] std::vector<std::string> wrongMedia() const;
    [[nodiscard]] std::size_t countMedia() const;

    // Number of rounds: ZQ_KILL_ROUNDS, or that.
    [[nodiscard]] static int rounds(int usual);
    // The same moments for the same ZQ_KILL_SEED.
    std::mt19937 random;

    std::string car;
    std::string sea;

private:
    void putLargeFootage();
    [[nodiscard]] std::int64_t ask(std::string const& user, char const* sql);

    std::int64_t port_ = 0;
    std::unique_ptr<zq_tests::RunningProgram> service_;
    std::unique_ptr<tarn7d::Accounts> accounts_;
    std::map<std::string, std::string> footage_; // bytes by clip
};

[[nodiscard]] std::vector<Piece> piecesOf(std::string const& answer, char const* array);

} // namespace road_tests
