#include "tests/tarn7d/TestRequests.h"

#include "host/engine/crypto/Digest.h"
#include "host/engine/json/SimdjsonReader.h"
#include "host/text/Unicode.h"

#include "ServiceValues.h"

namespace test {

namespace {

class Bytes final : public iMemHolder {
public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}
    [[nodiscard]] char const* getData() const noexcept override { return bytes_.data(); }
    [[nodiscard]] std::size_t getSize() const noexcept override { return bytes_.size(); }

private:
    std::string bytes_;
};

} // namespace

Zq::Ptr<JSON::Element> parseJson(std::string_view text) {
    engine::SimdjsonReader reader;
    return reader.parse(Bytes(text));
}

std::string jsonString(std::string_view text) {
    std::string quoted = "\"";
    for (char const c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + "\"";
}

std::string envelope(std::string_view commands) {
    std::string const digest = engine::sha256Hex(std::string(commands) + Tarn7HashSalt + Tarn7HashPepper);
    return R"({"api_key":")" + std::string(toUTF8(WideString(Tarn7ApiKey)).view()) +
           R"(","ver":1,"commands_json":)" + jsonString(commands) + R"(,"commands_hash":")" + digest + "\"}";
}

std::string requestBody(std::string_view commands, tarn7d::SessionKey session) {
    std::string body = "api=" + envelope(commands);
    if (session != tarn7d::SessionKey{}) {
        body += "&apicx=" + std::to_string(session.context) + "&apicm=" + std::to_string(session.marker);
    }
    return body;
}

Zq::Ptr<JSON::Element> reply(Zq::Ptr<JSON::Element> const& answer, std::uint16_t index) {
    Zq::Ptr<JSON::Element> const commands = JSON::orEmpty(answer).getChild("commands");
    return commands != nullptr ? commands->getChild(index) : nullptr;
}

} // namespace test
