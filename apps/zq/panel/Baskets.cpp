#include "apps/zq/panel/Baskets.h"

#include <algorithm>
#include <map>
#include <optional>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/Money.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/panel/ClipJson.h"
#include "host/engine/project/Project.h"

namespace zq::panel {

namespace {

RemoteAsset bareAsset(std::string const& id) {
    RemoteAsset asset;
    asset.id = wide(id);
    return asset;
}

std::string textOf(LogAttributeMap const& attributes, LogAttribute::eType type) {
    return std::string(attributes.find(LogAttribute(type)).view());
}

// Brings name and price up to date with what is known now.
void refresh(BasketClip& clip, RepositoryDesk const& desk, Session& session) {
    if (std::optional<KnownClip> const known = desk.knownClip(clip.id)) {
        clip.name = assetCell(known->asset, LogAttribute(LogAttribute::eName));
        clip.price = assetCell(known->asset, LogAttribute(LogAttribute::ePrice));
    } else if (clip.name.empty()) {
        Cookie const cookie = editOf(session, bareAsset(clip.id));
        if (auto const edit = cookie.isNull() ? std::nullopt : session.engine().project().edit(cookie)) {
            clip.name = textOf(edit->logAttributes, LogAttribute::eName);
            clip.price = textOf(edit->logAttributes, LogAttribute::ePrice);
        }
    }
}

// What is still to be paid.
class Sum {
public:
    void add(std::string const& price) {
        std::optional<Price> const parsed = parsePrice(price);
        if (!parsed) {
            ++unpriced_;
        } else if (!total_) {
            total_ = parsed;
        } else if (total_->currency == parsed->currency) {
            total_->cents += parsed->cents;
        } else {
            mixed_ = true;
        }
    }
    [[nodiscard]] std::string text() const { return total_ && !mixed_ ? priceText(*total_) : std::string(); }
    [[nodiscard]] std::size_t unpriced() const { return unpriced_; }

private:
    std::optional<Price> total_;
    bool mixed_ = false;
    std::size_t unpriced_ = 0;
};

std::size_t usesOf(Session& session, RemoteAsset const& asset) {
    Cookie const cookie = editOf(session, asset);
    return cookie.isNull() ? 0 : session.engine().project().usesOf(cookie).size();
}

} // namespace

void Baskets::replace(RepositoryDesk const& desk, Session& session, std::vector<std::string> const& ids) {
    std::map<std::string, BasketClip> before;
    for (BasketClip& clip : memory_.basket(desk.shortName())) {
        before.emplace(clip.id, std::move(clip));
    }
    std::vector<BasketClip> clips;
    for (std::string const& id : ids) {
        auto const found = before.find(id);
        clips.push_back(found != before.end() ? found->second : BasketClip{id, {}, {}});
        refresh(clips.back(), desk, session);
    }
    keep(desk, clips);
}

void Baskets::remove(RepositoryDesk const& desk, std::vector<std::string> const& ids) {
    std::vector<BasketClip> clips = memory_.basket(desk.shortName());
    std::size_t const removed = std::erase_if(
        clips, [&](BasketClip const& clip) { return std::ranges::find(ids, clip.id) != ids.end(); });
    if (removed != 0) {
        keep(desk, clips);
    }
}

void Baskets::keep(RepositoryDesk const& desk, std::vector<BasketClip> const& clips) {
    memory_.setBasket(desk.shortName(), clips);
    JSON::Builder json;
    json.startChild(nullptr);
    addText(json, "repository", desk.shortName());
    json.endChild();
    events_.send("basket", utf8(json.getOutput()));
}

std::string Baskets::json(RepositoryDesk const& desk, Session& session,
                          std::set<std::string> const& undecided) const {
    Sum sum;
    std::size_t toBuy = 0;
    JSON::Builder json;
    json.startChild(nullptr);
    json.startArray("clips");
    for (BasketClip& clip : memory_.basket(desk.shortName())) {
        refresh(clip, desk, session);
        RemoteAsset const asset = bareAsset(clip.id);
        bool const owned = desk.owns(session, asset);
        bool const isUndecided = !owned && undecided.contains(clip.id);
        if (!owned && !isUndecided) {
            ++toBuy;
            sum.add(clip.price);
        }
        json.startChild(nullptr);
        addText(json, "id", clip.id);
        addText(json, "name", clip.name);
        addText(json, "price", clip.price);
        json.add("owned", owned);
        json.add("undecided", isUndecided);
        addNumber(json, "used", usesOf(session, asset));
        json.endChild();
    }
    json.endArray();
    addNumber(json, "clipsToBuy", toBuy);
    addText(json, "total", sum.text());
    std::optional<std::int64_t> const credits = session.credits();
    json.add("credits", wide(credits ? std::to_string(*credits) : "null"), false);
    addNumber(json, "unpriced", sum.unpriced());
    json.endChild();
    return utf8(json.getOutput());
}

} // namespace zq::panel
