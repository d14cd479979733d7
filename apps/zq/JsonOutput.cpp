#include "apps/zq/JsonOutput.h"

#include <charconv>
#include <cmath>
#include <vector>

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

void addTexts(JSON::Builder& json, char const* key, std::span<std::string const> texts) {
    std::vector<WideString> items;
    items.reserve(texts.size());
    for (std::string const& text : texts) {
        items.push_back(quoted(wide(text)));
    }
    addItems(json, key, items);
}

void addDecimal(JSON::Builder& json, char const* key, double value) {
    char digits[64];
    std::to_chars_result const end =
        std::to_chars(digits, digits + sizeof digits, std::isfinite(value) ? value : 0.0);
    json.add(key, wide(std::string_view(digits, static_cast<std::size_t>(end.ptr - digits))), false);
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
