// The query of an address, as the names and values that it carries.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarn7d {

struct QueryField {
    std::string name;
    std::string value;

    friend bool operator==(QueryField const&, QueryField const&) = default;
};

// The fields of a query, without the "?" before it, in their order. Percent-escapes are bytes and "+" is a
// blank; a "%" that begins no escape stands for itself. A field without "=" has an empty value, and what lies
// between two "&" is no field if it is empty.
[[nodiscard]] std::vector<QueryField> parseQueryText(std::string_view query);

} // namespace tarn7d
