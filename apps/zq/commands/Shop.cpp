// "buy", "owned" and "find": what the account may have and has.

#include <optional>

#include "apps/zq/Command.h"
#include "apps/zq/EditLookup.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/orderClips.h"
#include "apps/zq/terminal/PlainText.h"
#include "host/json/Element.h"

namespace zq {

namespace {

class Buy final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("ID", ids_, "numbers of the clips, as search shows them")->required();
        CLI::Option_group* const way = options.add_option_group("Payment");
        way->add_flag("--credits", credits_, "pay at once with the account's credits");
        way->add_flag("--cash", cash_, "pay on the service's page, which opens in a browser");
        way->require_option(1);
    }

    Reply run(Session& session) override {
        ClipOrder order = orderClips(session, ids_, credits_ ? Payment::credits : Payment::cash);
        Purchase const& purchase = order.purchase;
        Reply reply;
        reply.standsInterrupted = order.state != OrderState::refused;
        reply.error = order.isPlaced() ? std::string() : purchase.words;
        reply.text = plainText(purchase.words) + "\n";
        if (!order.unwritten.empty()) {
            reply.warnings.push_back(
                "what came of the purchase could not be written down: " + plainText(order.unwritten) +
                "; until \"zq owned\" has told, it is in doubt");
        }
        reply.members = [order](JSON::Builder& json) {
            std::optional<std::int64_t> const& credits = order.purchase.credits;
            json.add("code", order.purchase.code);
            addText(json, "state", wordFor(order.state));
            if (!order.purchase.page.empty()) {
                addText(json, "page", order.purchase.page);
            }
            json.add("credits", wide(credits ? std::to_string(*credits) : "null"), false);
        };
        return reply;
    }

private:
    std::vector<std::string> ids_;
    bool credits_ = false;
    bool cash_ = false;
};

// What only an owned asset has: the version that was bought.
void addVersion(JSON::Builder& json, RemoteAsset const& asset) {
    auto const* const version = dynamic_cast<JSON::Element const*>(asset.payload.get());
    json.add("tr", version != nullptr ? version->getWString("tr") : WideString(), true);
    json.add("v", version != nullptr ? version->getWString("v") : WideString(), true);
}

// What the list says of the orders whose end was not known, a line each.
std::string inWords(OrdersAtList const& orders) {
    std::string lines;
    for (KeptOrder const& order : orders.told) {
        std::string clips;
        for (std::string const& id : order.clips) {
            clips += " " + id;
        }
        lines += plainText("the purchase of" + clips +
                           (order.state == OrderState::doubtful
                                ? ": in doubt still, as the list does not have all of it yet"
                                : ", which was in doubt: " + order.text)) +
                 "\n";
    }
    return lines;
}

void addOrders(JSON::Builder& json, OrdersAtList const& orders) {
    if (orders.told.empty()) {
        return;
    }
    json.startArray("purchases");
    for (KeptOrder const& order : orders.told) {
        json.startChild(nullptr);
        addTexts(json, "clips", order.clips);
        addText(json, "state", wordFor(order.state));
        addText(json, "text", order.text);
        json.endChild();
    }
    json.endArray();
}

class Owned final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        LightweightVector<RemoteAsset> const owned = session.ownedAssets();
        MediaFileRepositoryBase const& base = session.base();
        Reply reply;
        reply.text =
            owned.empty() ? std::string() : assetTable(owned, base.getLogAttributes(), session.screen());
        reply.text += owned.empty()       ? "nothing is owned yet\n"
                      : owned.size() == 1 ? std::string("1 clip\n")
                                          : std::to_string(owned.size()) + " clips\n";
        OrdersAtList const orders = settleOrders(session, owned);
        reply.text += inWords(orders);
        if (!orders.trouble.empty()) {
            reply.warnings.push_back("what the list says of purchases in doubt could not be written down: " +
                                     plainText(orders.trouble));
        }
        reply.members = [owned, orders, &base](JSON::Builder& json) {
            addNumber(json, "totalCount", owned.size());
            addOrders(json, orders);
            json.startArray("assets");
            for (RemoteAsset const& asset : owned) {
                json.startChild(nullptr);
                addAssetMembers(json, asset, base);
                addVersion(json, asset);
                json.endChild();
            }
            json.endArray();
        };
        return reply;
    }
};

class Find final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("EDIT", edit_, "the edit, as edits shows it, or the number of its clip")
            ->required();
    }

    Reply run(Session& session) override {
        engine::EditRecord const record = findEdit(session, edit_);
        RemoteAsset const asset = session.repository().findRemoteAsset(record.cookie);
        if (asset.id.isEmpty()) {
            throw CommandError("this edit does not come from " + utf8(session.repository().getName()));
        }
        MediaFileRepositoryBase const& base = session.base();
        LightweightVector<RemoteAsset> assets;
        assets.push_back(asset);
        Reply reply;
        reply.text = assetTable(assets, base.getLogAttributes(), session.screen());
        reply.members = [asset, cookie = engine::cookieText(record.cookie), &base](JSON::Builder& json) {
            addText(json, "cookie", cookie);
            addAssetMembers(json, asset, base);
        };
        return reply;
    }

private:
    std::string edit_;
};

} // namespace

std::unique_ptr<Command> makeBuy() {
    return std::make_unique<Buy>();
}
std::unique_ptr<Command> makeOwned() {
    return std::make_unique<Owned>();
}
std::unique_ptr<Command> makeFind() {
    return std::make_unique<Find>();
}

} // namespace zq
