// "buy", "owned" and "find": what the account may have and has.

#include <algorithm>
#include <filesystem>

#include "apps/zq/Command.h"
#include "apps/zq/EditLookup.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/OrderBook.h"
#include "apps/zq/buyClips.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/commands/Commands.h"
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
        refuseUndecided(session);
        Purchase const purchase = buyClips(session, ids_, credits_ ? Payment::credits : Payment::cash);
        Reply reply;
        reply.standsInterrupted = purchase.code == Purchase::done;
        reply.error = purchase.code == Purchase::done ? std::string() : purchase.words;
        reply.text = plainText(purchase.words) + "\n";
        reply.members = [code = purchase.code, page = purchase.page,
                         credits = purchase.credits](JSON::Builder& json) {
            json.add("code", code);
            if (!page.empty()) {
                addText(json, "page", page);
            }
            json.add("credits", wide(credits ? std::to_string(*credits) : "null"), false);
        };
        return reply;
    }

private:
    // What a panel of this home has ordered and does not know the end of is not ordered here as well.
    void refuseUndecided(Session& session) const {
        std::filesystem::path const file = session.engine().home() / "purchases.db";
        std::error_code error;
        if (!std::filesystem::exists(file, error) && !error) {
            return;
        }
        try {
            OrderBook book(file);
            if (book.inTheWay(utf8(session.shortName()), session.user(), ids_)) {
                throw CommandError(
                    "the panel has ordered one of these clips, and the service's list of what is "
                    "owned has not told yet what came of it: \"zq owned\" shows the list, and "
                    "\"zq panel\" watches it");
            }
        } catch (OrderBookError const& failure) {
            throw CommandError(std::string("nothing was bought: ") + failure.what());
        }
    }

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
        reply.members = [owned, &base](JSON::Builder& json) {
            addNumber(json, "totalCount", owned.size());
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
