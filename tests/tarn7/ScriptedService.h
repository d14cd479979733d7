// A service that answers each command word with what the test has laid down, and remembers what it was sent.
#pragma once

#include <map>

#include <nlohmann/json.hpp>

#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {

// The list of commands that a request carries, as its text.
inline std::string commandsOf(fake::Request const& request) {
    return nlohmann::json::parse(request.body.substr(4, request.body.rfind('}') - 3))["commands_json"];
}

// A word without an answer finds the service unreachable.
class ScriptedServiceTest : public Tarn7Test {
protected:
    void SetUp() override {
        connect();
        host.network.answerWith([this](fake::Request const& request) { return answerTo(request); });
    }

    // Answers that command from now on, with a whole body.
    void answer(std::string const& word, std::string body) { answers_[word] = std::move(body); }
    // The same with one successful reply.
    void reply(std::string const& word, std::string_view reply) { answer(word, answerOf({reply})); }
    void becomeUnreachable() { answers_.clear(); }

    // The lists of commands that came, as their texts, in order.
    [[nodiscard]] std::vector<std::string> sent() const {
        std::vector<std::string> lists;
        for (fake::Request const& request : host.network.requests()) {
            lists.push_back(commandsOf(request));
        }
        return lists;
    }

    static LightweightVector<RemoteAsset> assetsOf(std::vector<std::string> const& ids) {
        LightweightVector<RemoteAsset> assets;
        for (std::string const& id : ids) {
            assets.emplace_back().id = wide(id);
        }
        return assets;
    }

private:
    std::optional<fake::Answer> answerTo(fake::Request const& request) const {
        auto const found = answers_.find(nlohmann::json::parse(commandsOf(request))[0]["command"]);
        return found != answers_.end() ? std::optional(fake::Answer{found->second, 200}) : std::nullopt;
    }

    std::map<std::string, std::string> answers_;
};

// Answers that no command makes anything of: empty, cut, not JSON, of another shape.
inline std::vector<std::string> senselessAnswers() {
    return {"",
            " ",
            "<html></html>",
            "{",
            "{]",
            "nul",
            "\xff\xfe",
            "[]",
            "5",
            "\"text\"",
            "true",
            "null",
            "{}",
            R"({"commands":null})",
            R"({"commands":5})",
            R"({"commands":"items"})",
            R"({"commands":[null,5,"x",true]})",
            R"({"commands":[]})",
            R"({"e":true})",
            R"({"commands":[{"items":)"};
}

} // namespace tarn7_tests
