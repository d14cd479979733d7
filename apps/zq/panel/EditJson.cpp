#include "apps/zq/panel/EditJson.h"

#include "apps/zq/JsonOutput.h"
#include "host/files/iFileManager.h"
#include "host/os/OS.h"

namespace zq::panel {

char const* stateOf(engine::EditRecord const& edit, std::uint64_t task) {
    if (task != 0) {
        return "downloading";
    }
    if (edit.mediaLocation.isEmpty()) {
        return "preview";
    }
    return OS().fileManager().fileExists(edit.mediaLocation) ? "full" : "missing";
}

void addRateFraction(JSON::Builder& json, char const* key, Zq::FrameRate rate) {
    Zq::ExactRate const exact = Zq::getExactRate(rate);
    if (exact.numerator == 0) {
        json.add(key, L"null", false);
        return;
    }
    WideString const parts[] = {wide(std::to_string(exact.numerator)),
                                wide(std::to_string(exact.denominator))};
    addItems(json, key, parts);
}

} // namespace zq::panel
