// JSON::parse: the door to the host's JSON reader.
#pragma once

#include "host/json/Element.h"
#include "host/network/iMemHolder.h"

// What stands behind the door.
class ZQ_API iJSONReader {
public:
    virtual ~iJSONReader();
    // The text as elements; null if the bytes are not one JSON text, are nested deeper than 512 or are more
    // than 64 MiB. Thread: any.
    [[nodiscard]] virtual Zq::Ptr<JSON::Element> parse(iMemHolder const& bytes) = 0;
};

namespace JSON {

// The element of a JSON text (RFC 8259, UTF-8); null for null and for bytes that are not JSON. A text that is
// a single scalar gives an element with that member under the empty key. Numbers beyond a double's exact
// range lose precision; numbers beyond its range become the largest double. Thread: any.
[[nodiscard]] ZQ_API Zq::Ptr<Element> parse(Zq::Ptr<iMemHolder> const& bytes);

} // namespace JSON
