// The one request of the service: a signed GET for a page of clips.

#include "ServiceValues.h"
#include "framequarry/FrameQuarryResource.h"
#include "host/network/RequestUri.h"
#include "host/os/getTime32.h"
#include "host/text/Numbers.h"
#include "host/text/Unicode.h"

NarrowString FrameQuarryResource::sign(WideString const& path, WideString const& time) const {
    return digestService ? digestService->computeHmac(0, toUTF8(FrameQuarryPrivateKey + time), toUTF8(path))
                         : NarrowString();
}

Zq::Ptr<JSON::Element> FrameQuarryResource::runSearch(SearchQuery const& query) {
    RequestUri request;
    request.path = L"/api/v1/stock-items/search/";
    // The service lets a request live for a while from the moment that it calls "EXPIRES".
    WideString const time = Zq::WStringFromInteger(getTime32());
    // Signed are the path, before any parameter exists, and through the key the time: neither words nor page.
    NarrowString const signature = sign(request.getText(RequestUri::Encoding::on), time);

    request.queryParameters = {{L"keywords", getSearchPattern(query)},
                               {L"page", Zq::WStringFromInteger(query.page)},
                               {L"num_results", Zq::WStringFromInteger(query.pageSize)},
                               {L"APIKEY", FrameQuarryPublicKey},
                               {L"EXPIRES", time},
                               {L"HMAC", fromUTF8(signature)}};
    return ServiceConnection.getJson(request.getText(RequestUri::Encoding::on));
}
