#include "apps/tarn7d/FaultyAnswer.h"

#include <algorithm>

#include "apps/tarn7d/MediaResponse.h"

namespace tarn7d {

namespace {

using Expiry = DownloadAddresses::Expiry;

// Gives the body up to `end`; what is asked for behind it ends the connection, after `beforeTheEnd`.
void endBodyAt(httplib::Response& response, std::size_t end, std::function<void()> beforeTheEnd) {
    response.content_provider_ = [end, beforeTheEnd = std::move(beforeTheEnd),
                                  whole = response.content_provider_](std::size_t offset, std::size_t length,
                                                                      httplib::DataSink& sink) {
        if (offset >= end) {
            beforeTheEnd();
            return false;
        }
        return whole(offset, std::min(length, end - offset), sink);
    };
}

void replaceHeader(httplib::Response& response, std::string const& name, std::string const& value) {
    response.headers.erase(name);
    response.set_header(name, value);
}

void sendStatus(FaultRule const& rule, httplib::Response& response) {
    if (rule.retryAfter_s >= 0) {
        response.set_header("Retry-After", std::to_string(rule.retryAfter_s));
    }
    sendText(response, rule.status, "the fault desk has asked for this\n", "text/plain; charset=utf-8");
}

} // namespace

void FaultyAnswer::answer(httplib::Request const& request, httplib::Response& response,
                          std::span<std::string const> commandWords, Handler const& handler) {
    std::optional<FaultRule> const rule = desk_.take(request.path, commandWords);
    if (!rule) {
        handler(Expiry::usual);
        return;
    }
    if (rule->kind == FaultKind::status) {
        sendStatus(*rule, response);
        return;
    }
    // The library hands out its own changeable object.
    spoilRequest(*rule, const_cast<httplib::Request&>(request));
    handler(rule->kind == FaultKind::expiredAddress ? Expiry::past : Expiry::usual);
    spoilResponse(*rule, request, response);
}

void FaultyAnswer::spoilRequest(FaultRule const& rule, httplib::Request& request) const {
    switch (rule.kind) {
    case FaultKind::delay:
        desk_.pause(rule.time);
        break;
    case FaultKind::noRanges:
        request.headers.erase("Range");
        break;
    case FaultKind::changedValidator:
        request.headers.erase("If-None-Match");
        if (request.has_header("If-Range")) {
            request.headers.erase("Range");
        }
        break;
    default:
        break;
    }
}

void FaultyAnswer::spoilResponse(FaultRule const& rule, httplib::Request const& request,
                                 httplib::Response& response) {
    auto const whole = static_cast<std::int64_t>(response.content_length_);
    switch (rule.kind) {
    case FaultKind::cut:
        endBodyAt(response, static_cast<std::size_t>(rule.bytes), [] {});
        break;
    case FaultKind::stall:
        endBodyAt(response, static_cast<std::size_t>(rule.bytes),
                  [this, time = rule.time] { desk_.pause(time); });
        break;
    case FaultKind::wrongLength:
        endBodyAt(response, response.content_length_, [] {});
        response.content_length_ = static_cast<std::size_t>(std::max(std::int64_t{1}, whole + rule.bytes));
        break;
    case FaultKind::noRanges:
        replaceHeader(response, "Accept-Ranges", "none");
        break;
    case FaultKind::changedValidator:
        response.headers.erase("Last-Modified");
        replaceHeader(response, "ETag", "\"changed-" + std::to_string(++changes_) + "\"");
        break;
    case FaultKind::notJson:
        sendText(response, 200, "<!doctype html>\n<title>Please sign in to this network</title>\n",
                 "text/html; charset=utf-8");
        break;
    case FaultKind::lostAnswer:
        connections_.shutDown(request.remote_port);
        break;
    case FaultKind::delay:
    case FaultKind::status:
    case FaultKind::expiredAddress:
        break;
    }
}

} // namespace tarn7d
