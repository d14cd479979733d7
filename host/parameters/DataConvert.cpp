#include "host/parameters/DataConvert.h"

#include <limits>

#include "host/text/Numbers.h"

namespace DataConvert {

namespace {

template <class Integer>
bool convertInteger(WideString const& text, Integer& value) {
    // Beyond 32 bits in both directions, so that it stands for "no number" too.
    constexpr std::int64_t none = std::numeric_limits<std::int64_t>::max();
    std::int64_t const number = Zq::Int64FromWString(text, none);
    if (number < std::numeric_limits<Integer>::min() || number > std::numeric_limits<Integer>::max()) {
        return false;
    }
    value = static_cast<Integer>(number);
    return true;
}

} // namespace

WideString convert(bool value) {
    return value ? L"true" : L"false";
}
WideString convert(std::int32_t value) {
    return Zq::WStringFromInteger(value);
}
WideString convert(std::uint32_t value) {
    return Zq::WStringFromInteger(value);
}

bool convert(WideString const& text, bool& value) {
    bool const isTrue = text == L"true" || text == L"1";
    if (!isTrue && text != L"false" && text != L"0") {
        return false;
    }
    value = isTrue;
    return true;
}

bool convert(WideString const& text, std::int32_t& value) {
    return convertInteger(text, value);
}
bool convert(WideString const& text, std::uint32_t& value) {
    return convertInteger(text, value);
}

} // namespace DataConvert
