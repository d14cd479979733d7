#include "host/resources/resourceStr.h"

#include "host/HostServices.h"

iResourceStrings::~iResourceStrings() = default;

WideString resourceStrW(ResId number) {
    iResourceStrings* const strings = installedHost().strings;
    return strings != nullptr ? strings->read(number) : WideString();
}

WideString paddedResourceStrW(ResId number, wchar_t const* prefix, wchar_t const* suffix, ResStrFmt) {
    return WideString(prefix) + resourceStrW(number) + WideString(suffix);
}
