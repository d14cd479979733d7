#include "tests/tarn7d/TestService.h"

#include "host/engine/storage/Database.h"

namespace test {

namespace fs = std::filesystem;
using namespace tarn7d;

void putClips(fs::path const& catalogueFile, std::vector<TestClip> const& clips) {
    engine::Database database(catalogueFile);
    engine::Transaction transaction(database);
    engine::Statement put = database.prepare(R"sql(
INSERT INTO clip (path, present, size, modified, side_size, side_modified, title, keywords, price_cents, codec,
    width, height, standard, aspect, rate_numerator, rate_denominator, duration_ms, sound)
VALUES (?1, 1, 1, 1, 0, 0, ?2, '', ?3, 'H.264', ?4, ?5, 6, '16:9', 30000, 1001, 5005, 'no snd'))sql");
    for (std::size_t i = 0; i < clips.size(); ++i) {
        TestClip const& clip = clips[i];
        put.bind(1, std::string_view(std::to_string(i) + "/" + clip.path))
            .bind(2, std::string_view(clip.title))
            .bind(3, clip.price_cents)
            .bind(4, clip.width)
            .bind(5, clip.height)
            .run();
    }
    transaction.commit();
}

void setPresent(fs::path const& catalogueFile, std::int64_t clipId, bool present) {
    engine::Database(catalogueFile)
        .prepare("UPDATE clip SET present=?2 WHERE id=?1")
        .bind(1, clipId)
        .bind(2, present ? 1 : 0)
        .run();
}

TestService::TestService(fs::path const& folder)
    : footage((fs::create_directories(folder / "footage"), folder / "footage")),
      catalogueFile(folder / "catalogue.db"), accountsFile(folder / "accounts.db"),
      catalogue(catalogueFile, footage), accounts(accountsFile), sessions([this] { return steadyNow; }),
      throttle([this] { return steadyNow; }), shop(accountsFile, catalogue, [this] { return now; }),
      payments(accountsFile, catalogue, Payments::usualLifetime, [this] { return now; }),
      downloads(folder / "download.key", std::chrono::minutes(15), [this] { return now; }),
      protocol({catalogue, accounts, sessions, throttle, shop, payments, downloads,
                "https://media.example/icons/", "https://media.example/p/", "https://media.example",
                "https://pay.example/pay/"}) {}

SessionKey TestService::signIn(std::string const& name, std::int64_t credits) {
    (void)accounts.add(name, "secret", credits);
    return sessions.open(accountId(name));
}

std::int64_t TestService::accountId(std::string const& name) {
    return accounts.find(name).value_or(Account{}).id;
}

std::int64_t TestService::credits(std::string const& name) {
    return accounts.find(name).value_or(Account{}).credits;
}

Zq::Ptr<JSON::Element> TestService::ask(std::string const& commands, SessionKey session) {
    return parseJson(protocol.answer(requestBody(commands, session)));
}

Zq::Ptr<JSON::Element> TestService::askOne(std::string const& command, SessionKey session) {
    return reply(ask("[" + command + "]", session));
}

} // namespace test
