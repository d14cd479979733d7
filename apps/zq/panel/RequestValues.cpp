#include "apps/zq/panel/RequestValues.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>

#include "apps/zq/panel/ApiError.h"

namespace zq::panel {

namespace {

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

[[noreturn]] void refuse(std::string_view name, std::string const& what) {
    throw ApiError(ErrorCode::badRequest, "\"" + std::string(name) + "\" " + what);
}

} // namespace

std::uint32_t queryNumber(Request const& request, std::string_view name, std::uint32_t otherwise,
                          std::uint32_t least, std::uint32_t most) {
    auto const found = request.query.find(name);
    if (found == request.query.end()) {
        return otherwise;
    }
    std::optional<std::uint32_t> const number = numberIn<std::uint32_t>(found->second);
    if (!number || *number < least || *number > most) {
        refuse(name, "is a number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return *number;
}

std::string queryText(Request const& request, std::string_view name, std::size_t mostBytes) {
    auto const found = request.query.find(name);
    if (found == request.query.end()) {
        return {};
    }
    if (found->second.size() > mostBytes) {
        refuse(name, "is too long");
    }
    return found->second;
}

std::string bodyText(Request const& request, std::string_view name, std::size_t mostBytes) {
    auto const texts = JSON::orEmpty(request.body).strings();
    auto const found = std::ranges::find(texts, name, &JSON::StringMember::key);
    if (found == texts.end()) {
        refuse(name, "is missing, or no text");
    }
    if (found->value.size() > mostBytes) {
        refuse(name, "is too long");
    }
    return std::string(found->value);
}

std::vector<std::string> bodyClips(Request const& request, std::string_view name, std::size_t most) {
    Zq::Ptr<JSON::Element> const list = JSON::orEmpty(request.body).getChild(name);
    if (!list) {
        refuse(name, "is missing, or no list");
    }
    if (!list->numbers().empty() || !list->flags().empty() || !list->children().empty()) {
        refuse(name, "is a list of ids, which are texts");
    }
    std::vector<std::string> ids;
    std::set<std::string_view> seen;
    for (JSON::StringMember const& item : list->strings()) {
        constexpr std::size_t longestId_bytes = 200;
        if (!item.key.empty() || item.value.empty() || item.value.size() > longestId_bytes) {
            refuse(name, "is a list of ids");
        }
        if (seen.insert(item.value).second) {
            ids.emplace_back(item.value);
        }
    }
    if (ids.size() > most) {
        refuse(name, "has more than " + std::to_string(most) + " ids");
    }
    return ids;
}

std::size_t pathNumber(Request const& request, std::size_t capture) {
    std::optional<std::size_t> const number = numberIn<std::size_t>(request.captures.at(capture));
    if (!number) {
        throw ApiError(ErrorCode::notFound, "\"" + request.captures.at(capture) + "\" is no number");
    }
    return *number;
}

Response jsonAnswer(std::string body) {
    Response response;
    response.body = std::move(body);
    return response;
}

} // namespace zq::panel
