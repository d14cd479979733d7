// Setting of libcurl's options with the types checked.
#pragma once

#include <stdexcept>
#include <string>
#include <type_traits>

#include <curl/curl.h>

namespace engine {

// Throws std::runtime_error when the library refuses the option. `value` is a long or a pointer, never a bool
// or an int: the library reads its arguments by the option's own type.
template <class Value>
void setOption(CURL* easy, CURLoption option, Value value) {
    static_assert(std::is_same_v<Value, long> || std::is_pointer_v<Value> ||
                  std::is_same_v<Value, curl_off_t> || std::is_null_pointer_v<Value>);
    if (curl_easy_setopt(easy, option, value) != CURLE_OK) {
        throw std::runtime_error("libcurl refuses option " + std::to_string(option));
    }
}

} // namespace engine
