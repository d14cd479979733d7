// How a repository presents itself.
#pragma once

#include <cstdint>

#include "host/network/iHTTPServer.h"

struct RepositoryDescription {
    WideString name;
    WideString summary;
    WideString legalNotice; // rich text
    WideString shortName;   // two letters
    WideString category;    // left empty
    WideString webLink;
    WideString supportLink; // left empty
    HTTPConnectionInfo connection;
    std::int32_t resourceId = 0;
    std::int32_t version = 1;
    std::int32_t capabilities = 0;
    std::int32_t order = 0; // left 0
    WideString logo;        // a file name
    float thumbnailAspect = 16.0F / 9.0F;
};

// The legal notice: the lead, which ends in its blank, and behind it a link to the terms. The lead is rich
// text, the address is not. Thread: any.
[[nodiscard]] ZQ_API WideString makeTermsNotice(WideString const& lead, WideString const& termsAddress);
