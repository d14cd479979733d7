// The fields of a request's head as they were sent (RFC 9112, section 5).
#pragma once

#include <string_view>

#include <httplib.h>

namespace http {

struct HeadFields {
    httplib::Headers headers;
    bool areClear = true; // false where a line was left out, as it is no field
};

// Of a whole head, with its request line. Nothing in the values is decoded; blanks around them are not
// theirs. Thread: any.
[[nodiscard]] HeadFields headFieldsOf(std::string_view head);

} // namespace http
