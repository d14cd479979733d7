#include "tests/road/KillFixture.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <thread>

#include "host/engine/storage/Database.h"
#include "tests/tarn7d/TestFootage.h"

namespace road_tests {

namespace fs = std::filesystem;
using zq_tests::parsed;
using zq_tests::RunningProgram;

namespace {

constexpr std::uint32_t padding_bytes = 12 << 20;

std::string bytesOf(fs::path const& file) {
    std::error_code none;
    std::uintmax_t const size = fs::file_size(file, none);
    std::string bytes(none ? 0 : size, '\0');
    std::ifstream(file, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

// A box behind the film that every reader skips, and that no two places of are alike.
void pad(fs::path const& film, std::mt19937& random) {
    std::string box(padding_bytes, '\0');
    for (std::size_t i = 8; i + 4 <= box.size(); i += 4) {
        std::uint32_t const word = static_cast<std::uint32_t>(random());
        box.replace(i, 4, reinterpret_cast<char const*>(&word), 4);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        box[i] = static_cast<char>(padding_bytes >> (24 - 8 * i));
    }
    box.replace(4, 4, "free");
    std::ofstream(film, std::ios::binary | std::ios::app) << box;
}

} // namespace

void PrintTo(Piece const& piece, std::ostream* out) {
    *out << piece.in << "-" << piece.out << " at " << piece.start << "+" << piece.length;
}

std::vector<Piece> piecesOf(std::string const& answer, char const* array) {
    std::vector<Piece> pieces;
    Zq::Ptr<JSON::Element> const whole = parsed(answer);
    Zq::Ptr<JSON::Element> const list = JSON::orEmpty(whole).getChild(array);
    for (JSON::ChildMember const& member : JSON::orEmpty(list).children()) {
        JSON::Element const& piece = *member.element;
        pieces.push_back({piece.getInt("in", -1), piece.getInt("out", -1), piece.getInt("start", -1),
                          piece.getInt("length", -1)});
    }
    return pieces;
}

KillFixture::KillFixture() {
    char const* const seed = std::getenv("ZQ_KILL_SEED");
    random.seed(seed != nullptr ? static_cast<std::uint32_t>(std::atoi(seed)) : 1U);
    putLargeFootage();
    startService();
    accounts_ = std::make_unique<tarn7d::Accounts>(folder() / "data" / "accounts.db");
    std::vector<std::string> const found = answers({"search car", "search sea"});
    for (auto const& [clip, answer] : {std::pair(&car, found.at(0)), std::pair(&sea, found.at(1))}) {
        Zq::Ptr<JSON::Element> const page = parsed(answer);
        *clip = std::string(zq_tests::itemOf(page, "assets", 0).getStringView("id"));
    }
    footage_[car] = bytesOf(folder() / "footage" / "red car.mov");
    footage_[sea] = bytesOf(folder() / "footage" / "sea.mp4");
}

void KillFixture::putLargeFootage() {
    fs::path const carFile = folder() / "footage" / "red car.mov";
    fs::path const seaFile = folder() / "footage" / "sea.mp4";
    test::putFootage(test::Footage::plain, carFile);
    test::putFootage(test::Footage::large, seaFile);
    pad(carFile, random);
    pad(seaFile, random);
}

void KillFixture::startService() {
    Words const words{"--data",    (folder() / "data").string(),
                      "--footage", (folder() / "footage").string(),
                      "--prepare", "asked",
                      "--listen",  "127.0.0.1:" + std::to_string(port_)};
    service_ = std::make_unique<RunningProgram>(programFile("tarn7d").string(), words, environment);
    Zq::Ptr<JSON::Element> const ready = parsed(service_->readLine());
    port_ = JSON::orEmpty(ready).getInt("port", 0);
    leadTo("127.0.0.1:" + std::to_string(port_), std::string(JSON::orEmpty(ready).getStringView("ca")));
}

void KillFixture::killService() {
    service_->sendSignal(SIGKILL);
    static_cast<void>(service_->finish());
}

void KillFixture::addAccount(std::string const& user) {
    ASSERT_TRUE(accounts_->add(user, "secret", credits));
}

KillMoment KillFixture::momentIn(ShellRun const& measure, std::size_t step) {
    auto const longest = static_cast<std::uint64_t>(measure.times.at(step).count());
    KillMoment moment;
    moment.answers = step;
    moment.delay = std::chrono::microseconds(random() % (longest * 11 / 10 + 1));
    return moment;
}

ShellRun KillFixture::runShell(std::string const& user, std::vector<std::string> const& lines,
                               KillMoment const* kill) {
    std::string input = "login " + user + "\nsecret\n";
    for (std::string const& line : lines) {
        input += line + "\n";
    }
    std::unique_ptr<RunningProgram> const shell = start({"--json", "shell"});
    shell->write(input);
    shell->closeInput();
    ShellRun run;
    std::thread killer;
    auto last = std::chrono::steady_clock::now();
    for (;;) {
        if (kill != nullptr && !killer.joinable() && run.answers.size() >= kill->answers) {
            // No synchronisation: the moment is to be any.
            killer = std::thread([this, &shell, kill] {
                std::this_thread::sleep_for(kill->delay);
                if (kill->who == KillMoment::Who::shell) {
                    shell->sendSignal(SIGKILL);
                } else {
                    killService();
                }
            });
        }
        try {
            run.answers.push_back(shell->readLine());
        } catch (std::runtime_error const&) {
            break; // it has ended
        }
        auto const now = std::chrono::steady_clock::now();
        run.times.push_back(std::chrono::duration_cast<std::chrono::microseconds>(now - last));
        last = now;
    }
    if (killer.joinable()) {
        killer.join(); // before the process is waited for, so that the signal meets nobody else
    }
    run.killed = shell->finish().status == -1;
    return run;
}

std::int64_t KillFixture::ask(std::string const& user, char const* sql) {
    engine::Database database(folder() / "data" / "accounts.db");
    engine::Statement statement = database.prepare(sql);
    statement.bind(1, std::string_view(user));
    return statement.step() ? statement.integer(0) : -1;
}

std::int64_t KillFixture::creditsOf(std::string const& user) {
    return ask(user, "SELECT credits FROM account WHERE name = ?1");
}

std::int64_t KillFixture::creditsPaidBy(std::string const& user) {
    return ask(user, "SELECT coalesce(sum(line.credits), 0) FROM owned "
                     "JOIN purchase_line line ON line.purchase = owned.purchase AND line.clip = owned.clip "
                     "WHERE owned.account = (SELECT id FROM account WHERE name = ?1)");
}

std::size_t KillFixture::countOwnedBy(std::string const& user) {
    return static_cast<std::size_t>(
        ask(user, "SELECT count(*) FROM owned WHERE account = (SELECT id FROM account WHERE name = ?1)"));
}

bool KillFixture::hasDoubt() const {
    engine::Database book(home() / "purchases.db");
    return book.prepare("SELECT 1 FROM purchase WHERE state IN ('running', 'doubtful')").step();
}

void KillFixture::passHalfAnHour() const {
    engine::Database(home() / "purchases.db").execute("UPDATE purchase SET sent_s = sent_s - 2000");
}

std::map<std::string, std::string> KillFixture::preferences() const {
    engine::Database database(home() / "preferences.sqlite");
    std::map<std::string, std::string> values;
    for (engine::Statement row = database.prepare("SELECT key, value FROM preference"); row.step();) {
        values[std::string(row.text(0))] = std::string(row.text(1));
    }
    return values;
}

bool KillFixture::isSound(fs::path const& database) {
    engine::Database opened(database);
    engine::Statement check = opened.prepare("PRAGMA integrity_check");
    return check.step() && check.text(0) == "ok";
}

fs::path KillFixture::mediaFolder() const {
    return home() / "media" / "Tarn7";
}

std::vector<std::string> KillFixture::wrongMedia() const {
    std::vector<std::string> wrong;
    std::error_code none;
    for (fs::directory_entry const& entry : fs::directory_iterator(mediaFolder(), none)) {
        auto const found = footage_.find(entry.path().stem().string());
        if (found == footage_.end() || bytesOf(entry.path()) != found->second) {
            wrong.push_back(entry.path().filename().string());
        }
    }
    return wrong;
}

std::size_t KillFixture::countMedia() const {
    std::error_code none;
    fs::directory_iterator const files(mediaFolder(), none);
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

int KillFixture::rounds(int usual) {
    char const* const asked = std::getenv("ZQ_KILL_ROUNDS");
    return asked != nullptr ? std::atoi(asked) : usual;
}

} // namespace road_tests
