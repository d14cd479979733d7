// Signed requests to the service's one endpoint, and the connection that they travel over.

#include <iterator>
#include <string_view>

#include "ServiceValues.h"
#include "host/json/parse.h"
#include "host/network/RequestUri.h"
#include "host/text/Numbers.h"
#include "host/text/Unicode.h"
#include "tarn7/Command.h"

std::int32_t Tarn7Resource::connect(HTTPConnectionInfo const& info, LoggerHandle) {
    return connectTo(info);
}

WideString Tarn7Resource::signedHash(WideString const& text) const {
    NarrowString bytes = toUTF8(text);
    bytes.reserve(bytes.length() +
                  static_cast<std::uint32_t>(std::size(Tarn7HashSalt) + std::size(Tarn7HashPepper)));
    bytes += Tarn7HashSalt;
    bytes += Tarn7HashPepper;
    return digestService ? digestService->computeHash(bytes.c_str(), bytes.length()) : WideString();
}

Tarn7Resource::Response Tarn7Resource::sendCommands(LightweightVector<Command> const& commands) {
    if (!ServiceConnection.hasServer()) {
        return {};
    }
    JSON::Builder commandList;
    commandList.startArray(nullptr);
    for (Command const& command : commands) {
        command.writeTo(commandList);
    }
    commandList.endArray();
    // The service hashes the text that it receives: both uses below must see this very text.
    WideString const commandText = commandList.getOutput();

    JSON::Builder envelope;
    envelope.startChild(nullptr);
    envelope.add("api_key", Tarn7ApiKey, true);
    envelope.add("ver", 1);
    envelope.add("commands_json", commandText, true);
    envelope.add("commands_hash", signedHash(commandText), true);
    envelope.endChild();

    RequestUri form;
    form.queryParameters.push_back({L"api", envelope.getOutput()});
    if (!signedInUser.isEmpty()) {
        form.queryParameters.push_back({L"apicx", Zq::WStringFromInteger(sessionContext)});
        form.queryParameters.push_back({L"apicm", Zq::WStringFromInteger(sessionMarker)});
    }
    // The service takes the envelope literally; it does not decode percent signs.
    Zq::Ptr<iHTTPReply> const reply =
        ServiceConnection.postForm(form.getText(RequestUri::Encoding::off), L"?page=api");
    return reply ? JSON::parse(reply->getBody()) : Response();
}

Tarn7Resource::Response Tarn7Resource::sendCommand(Command const& command) {
    return sendCommands({command});
}

Tarn7Resource::Response Tarn7Resource::commandReply(Response const& response, std::uint16_t index) {
    Response const replies = JSON::orEmpty(response).getChild("commands");
    // A list that is longer than its count can tell ends where the count does.
    return index < JSON::orEmpty(replies).getNumChildren() ? replies->getChild(index) : Response();
}

WideString Tarn7Resource::commandStatusText(Response const& response, std::uint16_t index) {
    return JSON::orEmpty(commandReply(response, index)).getWString("s");
}

bool Tarn7Resource::responseFailed(Response const& response) {
    return !response || response->getBool("e", false) || !commandStatusText(response, 0).isEmpty();
}
