#include "apps/zq/panel/HttpResponse.h"

#include <algorithm>
#include <vector>

#include "apps/http/ByteSpan.h"
#include "apps/http/LoopbackServer.h"
#include "apps/zq/JsonOutput.h"

namespace zq::panel {

namespace {

constexpr std::size_t block_bytes = std::size_t{64} << 10;
constexpr std::uint32_t forEver_s = 365 * 24 * 60 * 60;

constexpr std::pair<char const*, char const*> securityHeaders[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; media-src 'self'; "
     "connect-src 'self'; font-src 'self'; form-action 'none'; base-uri 'none'; frame-ancestors *"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
};

std::string cacheControl(Response const& response) {
    if (response.fresh_s == 0) {
        return "no-store";
    }
    return "private, max-age=" + std::to_string(response.fresh_s) +
           (response.fresh_s >= forEver_s ? ", immutable" : "");
}

// A name of letters, digits and the like as it is, all else percent-encoded (RFC 6266, RFC 8187).
std::string contentDisposition(std::string const& name) {
    constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    for (char const c : name) {
        if (plain.find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            auto const byte = static_cast<unsigned char>(c);
            encoded += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return "attachment; filename*=UTF-8''" + encoded;
}

void sendContent(httplib::Request const& request, Response const& response, httplib::Response& answer) {
    std::uint64_t const size = response.content->size();
    answer.set_header("Accept-Ranges", "bytes");
    http::ByteSpan span{0, size};
    if (std::optional<http::ByteSpan> const asked =
            http::byteSpanOf(request.get_header_value("Range"), size)) {
        span = *asked;
        if (span.length == 0) {
            constexpr int noSuchRange = 416;
            answer.set_header("Content-Range", "bytes */" + std::to_string(size));
            sendError(answer, ErrorCode::badRequest, noSuchRange, "there is no such range");
            return;
        }
        constexpr int partial = 206;
        answer.status = partial;
        answer.set_header("Content-Range", "bytes " + std::to_string(span.first) + "-" +
                                               std::to_string(span.first + span.length - 1) + "/" +
                                               std::to_string(size));
    }
    if (span.length == 0) {
        answer.set_content("", response.type);
        return;
    }
    auto const block = std::make_shared<std::vector<char>>(
        static_cast<std::size_t>(std::min<std::uint64_t>(block_bytes, span.length)));
    answer.set_content_provider(
        static_cast<std::size_t>(span.length), response.type,
        [content = response.content, block, first = span.first](std::size_t offset, std::size_t length,
                                                                httplib::DataSink& sink) {
            std::size_t const got =
                content->read(first + offset, std::span(*block).first(std::min(length, block->size())));
            if (got == 0 && content->isLate()) {
                return http::LoopbackServer::isClientThere();
            }
            return got > 0 && sink.write(block->data(), got);
        });
}

void sendLive(Response const& response, httplib::Response& answer) {
    answer.set_chunked_content_provider(response.type, [live = response.live](std::size_t,
                                                                              httplib::DataSink& sink) {
        std::string piece;
        if (!live->next(piece)) {
            sink.done();
            return true;
        }
        return piece.empty() ? http::LoopbackServer::isClientThere() : sink.write(piece.data(), piece.size());
    });
}

} // namespace

void addSecurityHeaders(httplib::Response& answer) {
    for (auto const& [name, value] : securityHeaders) {
        answer.set_header(name, value);
    }
}

void sendResponse(httplib::Request const& request, Response response, httplib::Response& answer) {
    answer.status = response.status;
    for (auto const& [name, value] : response.headers) {
        answer.set_header(name, value);
    }
    answer.set_header("Cache-Control", cacheControl(response));
    if (!response.saveAs.empty()) {
        answer.set_header("Content-Disposition", contentDisposition(response.saveAs));
    }
    if (response.content) {
        sendContent(request, response, answer);
    } else if (response.live) {
        sendLive(response, answer);
    } else {
        answer.body = std::move(response.body);
        answer.set_header("Content-Type", response.type);
    }
}

void sendError(httplib::Response& answer, ErrorCode code, int status, std::string const& text,
               Reason reason) {
    JSON::Builder json;
    json.startChild(nullptr);
    json.startChild("error");
    addText(json, "code", rowOf(code).word);
    addText(json, "reason", wordOf(reason));
    addText(json, "text", text);
    json.endChild();
    json.endChild();
    answer.status = status;
    answer.headers.erase("Content-Type");
    answer.headers.erase("Cache-Control");
    answer.set_header("Cache-Control", "no-store");
    answer.set_content(utf8(json.getOutput()), "application/json; charset=utf-8");
}

} // namespace zq::panel
