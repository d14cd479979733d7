#include "tests/tarn7d/FrameQuarryRequests.h"

#include "host/engine/crypto/Digest.h"
#include "host/engine/network/PercentEncoding.h"
#include "host/text/Unicode.h"

#include "ServiceValues.h"

namespace test {

namespace {

std::string encoded(std::string_view bytes) {
    return std::string(toUTF8(engine::encodeComponent(fromUTF8(bytes))).view());
}

} // namespace

std::string frameQuarrySignature(std::string_view time) {
    std::string const key(toUTF8(WideString(FrameQuarryPrivateKey)).view());
    return engine::hmacSha256Hex(key + std::string(time), "/api/v1/stock-items/search/");
}

FrameQuarryRequest::FrameQuarryRequest(std::int64_t seconds)
    : key(toUTF8(WideString(FrameQuarryPublicKey)).view()), time(std::to_string(seconds)),
      signature(frameQuarrySignature(time)) {}

std::string FrameQuarryRequest::query() const {
    return "keywords=" + encoded(keywords) + "&page=" + encoded(page) + "&num_results=" + encoded(pageSize) +
           "&APIKEY=" + encoded(key) + "&EXPIRES=" + encoded(time) + "&HMAC=" + encoded(signature);
}

} // namespace test
