#include "tests/zq/panel/ShelfRepository.h"

#include "host/text/Unicode.h"

namespace panel_tests {

RepositoryDescription ShelfRepository::getDescription() const {
    RepositoryDescription told = description;
    told.shortName = L"SH";
    told.connection.user = signedInUser;
    return told;
}

LightweightVector<RemoteAsset> ShelfRepository::getPurchasedAssets() {
    ++ownedReads;
    LightweightVector<RemoteAsset> owned = onOwned(*this);
    purchasedIds.clear();
    for (RemoteAsset const& asset : owned) {
        purchasedIds.insert(asset.id);
    }
    return owned;
}

RemoteAsset ShelfRepository::clip(std::string const& id, std::string const& name, std::string const& price) {
    RemoteAsset asset;
    asset.id = fromUTF8(id);
    asset.logAttributes.add(LogAttribute(LogAttribute::eName), NarrowString(name));
    asset.logAttributes.add(LogAttribute(LogAttribute::ePrice), NarrowString(price));
    return asset;
}

} // namespace panel_tests
