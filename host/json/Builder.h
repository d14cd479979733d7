// JSON::Builder: writes a JSON text, member by member, without spaces.
//
// Thread: one at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "host/text/LightweightString.h"

namespace JSON {

class ZQ_API Builder {
public:
    // Opens an object, as the value of the key, or unnamed where the key is null. JSON has no unnamed member:
    // inside an object a null key becomes the empty key.
    void startChild(char const* key);
    void endChild();
    // The same for an array.
    void startArray(char const* key);
    void endArray();

    // A member. With `quoted` the value becomes a JSON string, escaped as JSON needs; without, it is written
    // as it stands, so that "true" becomes a boolean. Keys are UTF-8; a null key writes the empty key.
    void add(char const* key, WideString const& value, bool quoted);
    void add(char const* key, wchar_t const* value, bool quoted) { add(key, WideString(value), quoted); }
    void add(char const* key, std::int32_t value);
    void add(char const* key, bool value);
    // A text without the flag would be taken for a boolean.
    void add(char const* key, wchar_t const* value) = delete;
    void add(char const* key, char const* value) = delete;

    // The whole text so far.
    [[nodiscard]] WideString getOutput() const { return output_; }

private:
    void separate();
    void writeKey(char const* key);
    void open(char const* key, wchar_t bracket);
    void close(wchar_t bracket);
    void writeQuoted(std::wstring_view text);

    WideString output_;
    std::vector<bool> objects_; // of the open brackets, from the outside: object or array
    bool first_ = true;         // nothing stands before the next member in its object or array
};

} // namespace JSON
