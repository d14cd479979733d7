// What a request is made of, and its text as a query or as a form. A value. Thread: any.
#pragma once

#include <vector>

#include "host/text/LightweightString.h"

struct QueryParameter {
    WideString key;
    WideString value;
};

struct RequestUri {
    enum class Encoding { off, on };

    std::vector<QueryParameter> queryParameters; // in this order, keys may repeat
    WideString path;                             // a resource path or a whole URL; empty for a form

    // The path, then "?" unless the path is empty, then key "=" value joined by "&". Keys are written as they
    // are, values through encodeUrlComponent where encoding is on.
    [[nodiscard]] ZQ_API WideString getText(Encoding encoding) const;
};
