#include "apps/tarn7d/FrameQuarryProtocol.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <optional>

#include "apps/tarn7d/ClipVersion.h"
#include "apps/tarn7d/JsonText.h"
#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/PasswordHash.h"
#include "apps/tarn7d/QueryText.h"
#include "apps/tarn7d/Text.h"
#include "host/engine/crypto/Digest.h"
#include "host/text/Unicode.h"

#include "ServiceValues.h"

namespace tarn7d {

namespace {

using Refusal = FrameQuarryRefusal;

constexpr FrameQuarryRefusalRow refusals[] = {
    {Refusal::badRequest, "bad_request", "A parameter is there more than once"},
    {Refusal::badKey, "bad_key", "The key is not known to this service: the client is made for another one"},
    {Refusal::badTime, "bad_time", "EXPIRES is not a time: seconds since 1970 in decimal digits"},
    {Refusal::expired, "expired", "EXPIRES is more than five minutes away from the time of the service"},
    {Refusal::badSignature, "bad_signature", "The signature does not belong to the path and the time"},
    {Refusal::internal, "internal", "The service failed"},
};

constexpr std::int64_t usualPageSize = 50;
constexpr std::int64_t largestPageSize = 1000;

// The parameters as they came; nothing for one that did not.
struct Request {
    std::optional<std::string> keywords;
    std::optional<std::string> page;
    std::optional<std::string> pageSize;
    std::optional<std::string> key;
    std::optional<std::string> time;
    std::optional<std::string> signature;
    bool isAmbiguous = false; // one of them came more than once
};

struct ParameterRow {
    std::string_view name;
    std::optional<std::string> Request::*value;
};

constexpr ParameterRow parameters[] = {
    {"keywords", &Request::keywords}, {"page", &Request::page},    {"num_results", &Request::pageSize},
    {"APIKEY", &Request::key},        {"EXPIRES", &Request::time}, {"HMAC", &Request::signature},
};

Request readRequest(std::string_view query) {
    Request request;
    for (QueryField& field : parseQueryText(query)) {
        auto const row = std::ranges::find(parameters, field.name, &ParameterRow::name);
        if (row != std::end(parameters)) {
            std::optional<std::string>& value = request.*row->value;
            request.isAmbiguous = request.isAmbiguous || value.has_value();
            value = std::move(field.value);
        }
    }
    return request;
}

std::string_view textOf(std::optional<std::string> const& value) {
    return value ? std::string_view(*value) : std::string_view();
}

std::string const& publicKey() {
    static std::string const key(toUTF8(WideString(FrameQuarryPublicKey)).view());
    return key;
}

// The path alone is signed, under the private key with the time behind it.
std::string signatureAt(std::string_view time) {
    static std::string const privateKey(toUTF8(WideString(FrameQuarryPrivateKey)).view());
    return engine::hmacSha256Hex(privateKey + std::string(time), FrameQuarryProtocol::searchPath);
}

// Seconds since 1970; empty for anything but digits.
std::optional<std::int64_t> readTime(std::string_view text) {
    std::int64_t seconds = 0;
    bool const isNumber = text.find_first_not_of("0123456789") == std::string_view::npos;
    return isNumber && parseInteger(text, seconds) ? std::optional(seconds) : std::nullopt;
}

std::optional<Refusal> checkRequest(Request const& request, std::int64_t now) {
    if (request.isAmbiguous) {
        return Refusal::badRequest;
    }
    if (!equalInConstantTime(textOf(request.key), publicKey())) {
        return Refusal::badKey;
    }
    std::optional<std::int64_t> const time = readTime(textOf(request.time));
    if (!time) {
        return Refusal::badTime;
    }
    if (*time < now - FrameQuarryProtocol::tolerance.count() ||
        *time > now + FrameQuarryProtocol::tolerance.count()) {
        return Refusal::expired;
    }
    if (!equalInConstantTime(textOf(request.signature), signatureAt(*request.time))) {
        return Refusal::badSignature;
    }
    return std::nullopt;
}

std::string refusalText(Refusal refusal) {
    auto const row = std::ranges::find(refusals, refusal, &FrameQuarryRefusalRow::refusal);
    JSON::Builder answer;
    answer.startChild(nullptr);
    addText(answer, "status", "error");
    addText(answer, "code", row->code);
    addText(answer, "message", row->message);
    answer.endChild();
    return jsonText(answer);
}

std::int64_t numberIn(std::optional<std::string> const& value, std::int64_t least, std::int64_t most,
                      std::int64_t otherwise) {
    std::int64_t number = 0;
    return parseInteger(textOf(value), number) ? std::clamp(number, least, most) : otherwise;
}

// A number that is written already, as "29.97".
void addNumber(JSON::Builder& builder, char const* key, std::string_view digits) {
    builder.add(key, fromUTF8(digits), false);
}

std::string secondsText(std::int64_t time_ms) {
    constexpr double millisecondsPerSecond = 1000.0;
    std::array<char, 32> text{};
    auto const [end, error] = std::to_chars(text.data(), text.data() + text.size(),
                                            static_cast<double>(time_ms) / millisecondsPerSecond);
    return {text.data(), end};
}

// One version in which the clip is there. Nothing can be bought with this protocol.
void addVersion(JSON::Builder& item, Clip const& original, ClipVersion version) {
    Clip const clip = describeVersion(original, version);
    item.startChild(nullptr);
    addText(item, "name", version == ClipVersion::original ? "Original" : "H.264");
    addText(item, "extension", extensionOf(clip, version));
    addInteger(item, "width", clip.media.width);
    addInteger(item, "height", clip.media.height);
    if (std::string const rate = displayRateText(clip.media.rate); !rate.empty()) {
        addNumber(item, "frame_rate", rate);
    }
    if (version == ClipVersion::original) {
        addNumber(item, "size_bytes", std::to_string(clip.stamp.size_bytes));
    }
    item.endChild();
}

void addItem(JSON::Builder& answer, Clip const& clip, std::string const& server) {
    std::array<char, 24> number{};
    std::snprintf(number.data(), number.size(), "%09lld", static_cast<long long>(clip.id));
    answer.startChild(nullptr);
    addInteger(answer, "id", clip.id);
    addText(answer, "title", clip.description.title);
    addNumber(answer, "duration", secondsText(clip.media.duration_ms));
    addText(answer, "thumbnail_url", server + "/icons/" + number.data() + "_iconm.jpeg");
    addText(answer, "preview_url", server + "/previews/" + number.data() + ".mp4");
    answer.startArray("download_format_details");
    for (ClipVersion const version : {ClipVersion::original, ClipVersion::transcoded}) {
        if (hasVersion(clip, version)) {
            addVersion(answer, clip, version);
        }
    }
    answer.endArray();
    answer.endChild();
}

std::string foundText(ClipPage const& found, std::string const& server) {
    JSON::Builder answer;
    answer.startChild(nullptr);
    answer.startArray("info");
    for (Clip const& clip : found.clips) {
        addItem(answer, clip, server);
    }
    answer.endArray();
    addInteger(answer, "totalSearchResults", found.total);
    answer.endChild();
    return jsonText(answer);
}

} // namespace

std::span<FrameQuarryRefusalRow const> frameQuarryRefusals() {
    return refusals;
}

FrameQuarryProtocol::FrameQuarryProtocol(Catalogue& catalogue, std::string server, WallClock clock)
    : catalogue_(catalogue), server_(std::move(server)), clock_(std::move(clock)) {}

std::string FrameQuarryProtocol::answerSearch(std::string_view query,
                                              DownloadAddresses::Expiry expiry) const {
    constexpr std::int64_t endOfTime = std::numeric_limits<std::int64_t>::max() / 2;
    Request const request = readRequest(query);
    std::int64_t const now = expiry == DownloadAddresses::Expiry::past ? endOfTime : clock_();
    if (std::optional<Refusal> const refusal = checkRequest(request, now)) {
        return refusalText(*refusal);
    }
    std::int64_t const page = numberIn(request.page, 1, std::numeric_limits<std::int32_t>::max(), 1);
    std::int64_t const size = numberIn(request.pageSize, 0, largestPageSize, usualPageSize);
    try {
        ClipQuery const words = parseClipQuery(textOf(request.keywords), FilterWords::ordinary);
        return foundText(catalogue_.search(words, (page - 1) * size, size), server_);
    } catch (std::exception const& failure) {
        logLine(std::string("a search failed: ") + failure.what());
        return refusalText(Refusal::internal);
    }
}

} // namespace tarn7d
