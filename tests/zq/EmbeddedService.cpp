#include "tests/zq/EmbeddedService.h"

#include "apps/zq/MemoryBlock.h"
#include "host/engine/json/SimdjsonReader.h"
#include "tests/tarn7d/TestFootage.h"

namespace zq_tests {

namespace fs = std::filesystem;

Zq::Ptr<JSON::Element> parsed(std::string const& line) {
    return engine::SimdjsonReader().parse(zq::MemoryBlock(line));
}

std::string errorOf(std::string const& line) {
    Zq::Ptr<JSON::Element> const answer = parsed(line);
    return std::string(JSON::orEmpty(answer).getString("error").view());
}

std::vector<std::string> keysOf(JSON::Element const& element) {
    std::vector<std::string> keys;
    for (auto const& member : element.strings()) {
        keys.emplace_back(member.key);
    }
    for (auto const& member : element.numbers()) {
        keys.emplace_back(member.key);
    }
    for (auto const& member : element.flags()) {
        keys.emplace_back(member.key);
    }
    for (auto const& member : element.children()) {
        keys.emplace_back(member.key);
    }
    return keys;
}

JSON::Element const& itemOf(Zq::Ptr<JSON::Element> const& answer, char const* array, std::uint16_t index) {
    Zq::Ptr<JSON::Element> const items = JSON::orEmpty(answer).getChild(array);
    // The answer keeps its items alive.
    return JSON::orEmpty(JSON::orEmpty(items).getChild(index));
}

tarn7d::CertificateFiles Service::certificates(char const* name) const {
    fs::create_directories(folder() / name);
    return tarn7d::ensureCertificates(folder() / name, {"www.tarn7.example"});
}

void Service::leadTo(std::string const& server, fs::path const& ca) {
    configure({programFile("tarn7.zqd")}, network(server, ca));
}

EmbeddedService::EmbeddedService(Words const& serviceOptions, char const* credits) {
    test::putFootage(test::Footage::plain, folder() / "footage" / "red car.mov");
    test::putFootage(test::Footage::large, folder() / "footage" / "sea.mp4");
    added_ = addAccount("anna", "open sesame", credits);
    Words words{"--data",    (folder() / "data").string(),
                "--footage", (folder() / "footage").string(),
                "--prepare", "asked"};
    words.insert(words.end(), serviceOptions.begin(), serviceOptions.end());
    service_ = std::make_unique<RunningProgram>(programFile("tarn7d").string(), words, environment);
    Zq::Ptr<JSON::Element> const ready = parsed(service_->readLine());
    port_ = JSON::orEmpty(ready).getInt("port", 0);
    ca_ = std::string(JSON::orEmpty(ready).getString("ca").view());
    Zq::Ptr<JSON::Element> const desk = JSON::orEmpty(ready).getChild("faultDesk");
    faultPort_ = JSON::orEmpty(desk).getInt("port", 0);
    faultToken_ = std::string(JSON::orEmpty(desk).getString("token").view());
    leadTo(name(), ca_);
}

Finished EmbeddedService::addAccount(std::string const& user, std::string const& password,
                                     char const* credits) const {
    RunningProgram account(
        programFile("tarn7d").string(),
        Words{"account", "add", user, "--credits", credits, "--data", (folder() / "data").string()},
        environment);
    account.write(password + "\n" + password + "\n");
    return account.finish();
}

std::string EmbeddedService::clip(std::string const& words) const {
    Zq::Ptr<JSON::Element> const answer = parsed(answers({"search " + words}).at(0));
    return std::string(itemOf(answer, "assets", 0).getString("id").view());
}

std::vector<std::string> EmbeddedService::signedIn(std::vector<std::string> const& lines) const {
    std::vector<std::string> all{"login anna", "open sesame"};
    all.insert(all.end(), lines.begin(), lines.end());
    std::vector<std::string> found = answers(all);
    found.erase(found.begin());
    return found;
}

} // namespace zq_tests
