#include "apps/zq/JsonOutput.h"

#include "apps/zq/terminal/PlainText.h"

namespace zq {

WideString quoted(WideString const& text) {
    JSON::Builder json;
    json.add("", text, true);
    constexpr std::uint32_t emptyKey = 3; // "":
    return json.getOutput().substr(emptyKey);
}

void addItems(JSON::Builder& json, char const* key, std::span<WideString const> items) {
    WideString array(L"[");
    for (WideString const& item : items) {
        array += array.length() > 1 ? L"," + item : item;
    }
    json.add(key, array + L"]", false);
}

std::string jsonLine(Reply const& reply) {
    JSON::Builder json;
    json.startChild(nullptr);
    json.add("ok", reply.ok());
    if (!reply.ok()) {
        addText(json, "error", reply.error);
    }
    if (reply.members) {
        reply.members(json);
    }
    json.endChild();
    return escapeHidden(utf8(json.getOutput()));
}

} // namespace zq
