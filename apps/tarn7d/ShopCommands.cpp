// The commands of the cart and of buying it.
#include <algorithm>

#include "apps/tarn7d/Commands.h"
#include "apps/tarn7d/Payments.h"
#include "apps/tarn7d/Shop.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

// "5,12,7" as numbers. Empty when it is anything else, or names more clips than a cart may hold.
std::optional<std::vector<std::int64_t>> parseIds(JSON::Element const& parameters, char const* key) {
    if (parameters.hasNum(key) || parameters.getChild(key) != nullptr) {
        return std::nullopt;
    }
    std::vector<std::int64_t> ids;
    std::string_view text = parameters.getStringView(key);
    if (text.empty()) {
        return ids;
    }
    for (;;) {
        std::size_t const end = std::min(text.find(','), text.size());
        std::string_view const digits = text.substr(0, end);
        std::int64_t id = 0;
        if (digits.find_first_not_of("0123456789") != std::string_view::npos || !parseInteger(digits, id) ||
            ids.size() == Shop::mostInCart) {
            return std::nullopt;
        }
        ids.push_back(id);
        if (end == text.size()) {
            return ids;
        }
        text.remove_prefix(end + 1);
    }
}

CommandError emptyCart() {
    return {ErrorCode::emptyCart, "The cart is empty"};
}

CommandError blocked() {
    return {ErrorCode::cannotPay, "Payments of this account are blocked"};
}

CommandError noAccount() {
    return {ErrorCode::signInRequired, "Sign in first"};
}

} // namespace

Reply getCart(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    Cart const cart = parts.shop.cart(request.account->id);
    addSuccess(reply);
    reply.startArray("items");
    for (CartLine const& line : cart.lines) {
        reply.startChild(nullptr);
        addInteger(reply, "id", line.clip.id);
        addText(reply, "n", line.clip.description.title);
        addText(reply, "pr", priceText(line.clip.description.price_cents));
        addInteger(reply, "cr", creditsOf(line.clip.description.price_cents));
        reply.add("own", line.owned);
        reply.endChild();
    }
    reply.endArray();
    addText(reply, "tot_pr", priceText(cart.total_cents()));
    addInteger(reply, "tot_cr", cart.total_credits());
    addInteger(reply, "credits", request.account->credits);
    return std::nullopt;
}

Reply modifyCart(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    auto const remove = parseIds(request.parameters, "rmid");
    auto const add = parseIds(request.parameters, "addid");
    if (!remove || !add) {
        return CommandError{ErrorCode::badParameter, "The rmid or addid is not a list of clip numbers"};
    }
    switch (parts.shop.changeCart(request.account->id, *remove, *add)) {
    case Shop::CartChange::done:
        break;
    case Shop::CartChange::unknownClip:
        return CommandError{ErrorCode::noSuchClip, "There is no clip of one of these numbers"};
    case Shop::CartChange::full:
        return CommandError{ErrorCode::cartFull,
                            "A cart holds at most " + std::to_string(Shop::mostInCart) + " clips"};
    }
    addSuccess(reply);
    return std::nullopt;
}

Reply buyWithCredits(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    Shop::Purchase const purchase = parts.shop.buyWithCredits(request.account->id);
    switch (purchase.outcome) {
    case Shop::Outcome::done:
        break;
    case Shop::Outcome::noAccount:
        return noAccount();
    case Shop::Outcome::emptyCart:
        return emptyCart();
    case Shop::Outcome::notCovered:
        return CommandError{ErrorCode::cannotPay, "The cart costs more than the account's credits"};
    case Shop::Outcome::blocked:
        return blocked();
    }
    addSuccess(reply);
    addInteger(reply, "charged", purchase.charged_credits);
    addInteger(reply, "credits", purchase.left_credits);
    return std::nullopt;
}

Reply buyWithCash(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    Payments::Begun const begun = parts.payments.begin(request.account->id);
    switch (begun.outcome) {
    case Payments::Outcome::done:
        break;
    case Payments::Outcome::noAccount:
        return noAccount();
    case Payments::Outcome::emptyCart:
        return emptyCart();
    case Payments::Outcome::blocked:
        return blocked();
    }
    addSuccess(reply);
    addText(reply, "url", parts.paymentBase + begun.token);
    return std::nullopt;
}

} // namespace tarn7d
