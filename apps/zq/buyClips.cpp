#include "apps/zq/buyClips.h"

#include <set>
#include <utility>

#include "apps/zq/Reason.h"
#include "apps/zq/Text.h"
#include "host/engine/os/DesktopShell.h"

namespace zq {

namespace {

std::string clips(std::size_t count) {
    return count == 1 ? "1 clip" : std::to_string(count) + " clips";
}

std::string inWords(Purchase const& purchase, Payment payment, std::size_t count, ServiceWatch const& watch) {
    if (purchase.code != Purchase::done) {
        bool const refused = purchase.code == Purchase::refused;
        return "nothing was bought: " + watch.failure().value_or(refused ? "the account cannot pay this"
                                                                         : "the service does not say why");
    }
    if (payment == Payment::cash) {
        return (purchase.browserStarted ? "the payment page for " + clips(count) + " opens in the browser: "
                                        : "no browser could be started; pay for " + clips(count) + " at ") +
               purchase.page + " ; what is paid there shows in \"owned\"";
    }
    return "bought " + clips(count) + " with credits" +
           (purchase.credits ? "; credits left: " + std::to_string(*purchase.credits) : "");
}

} // namespace

void requireSale(Session const& session) {
    if (!session.needsSignIn()) {
        throw ReasonedError(Reason::sellsNothing,
                            utf8(session.repository().getName()) + " sells nothing: fetch takes what it has");
    }
}

Purchase buyClips(Session& session, std::vector<std::string> const& ids, Payment payment) {
    LightweightVector<RemoteAsset> assets;
    std::set<std::string> seen;
    for (std::string const& id : ids) {
        requireClipNumber(id);
        if (seen.insert(id).second) {
            RemoteAsset asset;
            asset.id = wide(id);
            assets.push_back(asset);
        }
    }
    requireSale(session);
    iMediaFileRepository& repository = session.signedIn();
    ServiceWatch const watch = session.watch();
    Purchase purchase;
    purchase.code = payment == Payment::credits ? repository.requestCreditPurchase(assets)
                                                : repository.requestExternalPurchase(assets);
    purchase.credits = session.credits();
    engine::DesktopShell::Page page = session.engine().shell().takeLastPage();
    purchase.page = std::move(page.address);
    purchase.browserStarted = page.started;
    purchase.words = inWords(purchase, payment, seen.size(), watch);
    return purchase;
}

} // namespace zq
