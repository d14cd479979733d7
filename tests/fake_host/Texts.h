// Short ways for a test to write down and to read what the host keeps in its own text and JSON types.
#pragma once

#include <string>
#include <string_view>

#include "host/json/parse.h"
#include "host/preferences/configb.h"
#include "host/text/Unicode.h"
#include "tests/fake_host/FakeNetwork.h"

namespace fake {

inline std::string utf8(WideString const& text) {
    return std::string(toUTF8(text).view());
}
inline WideString wide(std::string_view text) {
    return fromUTF8(text);
}

// The element of a JSON text; null for what is none. Needs an installed host.
inline Zq::Ptr<JSON::Element> parsed(std::string json) {
    return JSON::parse(Zq::makeShared<MemHolder>(std::move(json)));
}

// A sign-in form as somebody has filled it in.
inline configb typedForm(std::string_view user, std::string_view password) {
    configb form;
    form.set("username", NarrowString(user));
    form.set("password", NarrowString(password));
    return form;
}

} // namespace fake
