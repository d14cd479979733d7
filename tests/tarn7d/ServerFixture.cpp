#include "tests/tarn7d/ServerFixture.h"

#include <fstream>
#include <sstream>

#include "tests/tarn7d/TestFootage.h"

namespace test {

namespace fs = std::filesystem;
using namespace tarn7d;

Client::Client(int port, fs::path const& ca) : SSLClient("127.0.0.1", port) {
    set_ca_cert_path(ca.c_str());
    enable_server_certificate_verification(true);
    set_keep_alive(true);
    set_tcp_nodelay(true);
    set_read_timeout(30);
}

ServerFixture::ServerFixture() {
    putFootage(Footage::plain, footage_ / "a.mov");
    putFootage(Footage::large, footage_ / "b.mov");
}

ServerOptions ServerFixture::options() const {
    ServerOptions options;
    options.data = folder_.path() / "data";
    options.footage = footage_;
    options.rescanInterval = std::chrono::milliseconds(50);
    return options;
}

void ServerFixture::start(ServerOptions options) {
    server_ = std::make_unique<Server>(std::move(options));
    port_ = server_->start();
}

Zq::Ptr<JSON::Element> ServerFixture::ask(Client& client, std::string const& commands, SessionKey session) {
    auto const result = client.Post("/?page=api", requestBody(commands, session), formType);
    return result && result->status == 200 ? parseJson(result->body) : nullptr;
}

Zq::Ptr<JSON::Element> ServerFixture::askOne(Client& client, std::string const& command, SessionKey session) {
    return reply(ask(client, "[" + command + "]", session));
}

SessionKey ServerFixture::signIn(Client& client, std::string const& name, std::int64_t credits) {
    (void)server_->addAccount(name, "secret", credits);
    Zq::Ptr<JSON::Element> const signedIn =
        askOne(client, R"({"command":"login","username":)" + jsonString(name) + R"(,"password":"secret"})");
    JSON::Element const& reply = JSON::orEmpty(signedIn);
    return {static_cast<std::int32_t>(reply.getInt("cx", -1)),
            static_cast<std::int32_t>(reply.getInt("cm", -1))};
}

std::int64_t ServerFixture::total(Client& client) {
    return JSON::orEmpty(askOne(client, R"({"command":"search","query":""})")).getInt("tot_nbr_rows", -1);
}

std::string ServerFixture::pathOf(std::string const& url) {
    std::string const server = "https://www.tarn7.example";
    return url.starts_with(server) ? url.substr(server.size()) : "not on the public name: " + url;
}

std::string ServerFixture::boughtFile(Client& client, SessionKey session, int clip, std::string const& tr) {
    std::string const id = std::to_string(clip);
    Zq::Ptr<JSON::Element> const answer =
        ask(client,
            R"([{"command":"modify_active_cart","addid":")" + id +
                R"("},{"command":"purchase_using_credits"},{"command":"download","bid":")" + id +
                R"(","tr":")" + tr + R"(","v":"1"}])",
            session);
    return pathOf(std::string(JSON::orEmpty(reply(answer, 2)).getStringView("url")));
}

std::string fileBytes(fs::path const& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

} // namespace test
