#include "apps/zq/optionWords.h"

namespace zq {

char const* inWords(SearchOptionResult result) {
    switch (result) {
    case SearchOptionResult::set:
        return "";
    case SearchOptionResult::noSuchGroup:
        return "there is no such group; groups count from 0";
    case SearchOptionResult::noSuchOption:
        return "the group has no option at that index; options count from 0";
    case SearchOptionResult::inactive:
        return "the option has no meaning at the moment";
    case SearchOptionResult::noSuchTag:
        return "no entry of the option has that tag";
    case SearchOptionResult::notABoolean:
        return "the value should be true or false";
    case SearchOptionResult::refused:
        break;
    }
    return "the option does not take that value";
}

} // namespace zq
