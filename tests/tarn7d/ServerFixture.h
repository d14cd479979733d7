// A server in this process over a small footage folder, and clients that verify its certificate.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <httplib.h>

#include "apps/tarn7d/Server.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/TestRequests.h"

namespace test {

inline constexpr char const* formType = "application/x-www-form-urlencoded";

class Client : public httplib::SSLClient {
public:
    Client(int port, std::filesystem::path const& ca);
};

// Clip 1 is small ("a.mov"), clip 2 has 1080 lines ("b.mov").
class ServerFixture : public testing::Test {
protected:
    ServerFixture();

    [[nodiscard]] tarn7d::ServerOptions options() const;
    void start() { start(options()); }
    void start(tarn7d::ServerOptions options);
    [[nodiscard]] Client client() const { return Client(port_, server_->caFile()); }

    // The answer to a list of commands; null when none comes or it is not JSON.
    static Zq::Ptr<JSON::Element> ask(Client& client, std::string const& commands,
                                      tarn7d::SessionKey session = {});
    // The reply to one command.
    static Zq::Ptr<JSON::Element> askOne(Client& client, std::string const& command,
                                         tarn7d::SessionKey session = {});
    // Signs in to an account that is made if it is not there.
    tarn7d::SessionKey signIn(Client& client, std::string const& name = "editor", std::int64_t credits = 500);
    // Number of clips that a search finds; -1 when it fails.
    [[nodiscard]] static std::int64_t total(Client& client);

    // Path and query of an address, which begins with the public name.
    [[nodiscard]] static std::string pathOf(std::string const& url);
    // Buys the clip with credits and gives path and query of its full file.
    std::string boughtFile(Client& client, tarn7d::SessionKey session, int clip, std::string const& tr = "0");

    test::TemporaryFolder folder_;
    std::filesystem::path const footage_ = folder_.path() / "footage";
    std::unique_ptr<tarn7d::Server> server_;
    int port_ = 0;
};

// The whole file.
[[nodiscard]] std::string fileBytes(std::filesystem::path const& file);

} // namespace test
