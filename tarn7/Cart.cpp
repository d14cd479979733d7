// The account's active cart, which lives at the service: a purchase buys what is in it.

#include <algorithm>
#include <iterator>
#include <set>
#include <vector>

#include "host/json/NumberMembers.h"
#include "host/text/Numbers.h"
#include "tarn7/Command.h"

namespace {

using Ids = std::set<WideString>; // by code unit: "10" stands before "9"

// The service numbers its clips without a sign.
Ids idsOf(JSON::Element const& items) {
    Ids ids;
    std::uint16_t const count = items.getNumChildren();
    for (std::uint16_t i = 0; i < count; ++i) {
        auto const number = static_cast<std::uint32_t>(JSON::getInt32(*items.getChild(i), "id"));
        ids.insert(Zq::WStringFromInteger(number));
    }
    return ids;
}

// The ids that are in `ids` and not in `others`.
std::vector<WideString> difference(Ids const& ids, Ids const& others) {
    std::vector<WideString> missing;
    std::ranges::set_difference(ids, others, std::back_inserter(missing));
    return missing;
}

void addIds(Tarn7Resource::Command& command, char const* key, std::vector<WideString> const& ids) {
    if (ids.empty()) {
        return;
    }
    WideString list = ids.front();
    for (std::size_t i = 1; i < ids.size(); ++i) {
        list += L',';
        list += ids[i];
    }
    command.addParam(key, list);
}

} // namespace

bool Tarn7Resource::syncCart(LightweightVector<RemoteAsset> const& assets) {
    // The failure test is asked of the reply itself and finds no further replies in it: only the reply's own
    // flag decides, whatever its text says. A cart that cannot be read counts as empty, so that all is asked
    // for.
    Response const reply = commandReply(sendCommand(Command(L"get_cart_formatted")), 0);
    Ids cartIds;
    if (!responseFailed(reply)) {
        cartIds = idsOf(JSON::orEmpty(reply->getChild("items")));
    }
    Ids wantedIds;
    for (RemoteAsset const& asset : assets) {
        wantedIds.insert(asset.id);
    }
    if (cartIds == wantedIds) {
        return true;
    }

    Command command(L"modify_active_cart");
    addIds(command, "rmid", difference(cartIds, wantedIds));
    addIds(command, "addid", difference(wantedIds, cartIds));
    return !responseFailed(sendCommand(command));
}
