// The two ways to buy what is in the cart.

#include "host/log/Log.h"
#include "host/os/OS.h"
#include "host/os/iShell.h"
#include "tarn7/Command.h"

namespace {

enum PurchaseResult : std::int32_t { nothingBought = 0, bought = 2, refusedAs106 = 3 };

// The service's own code for what went wrong; -1 where it gives none.
std::int32_t codeOf(JSON::Element const& reply) {
    return static_cast<std::int32_t>(reply.getInt("c", -1));
}

} // namespace

// In both ways the failure test is asked of the reply itself, as with the reading of the cart: only the
// reply's own flag decides.

std::int32_t Tarn7Resource::requestExternalPurchase(LightweightVector<RemoteAsset> const& assets) {
    if (!syncCart(assets)) {
        return nothingBought;
    }
    Response const reply = commandReply(sendCommand(Command(L"purchase_using_cash")), 0);
    if (!responseFailed(reply)) {
        WideString const paymentPage = reply->getWString("url");
        if (paymentPage.isEmpty()) {
            return nothingBought;
        }
        // Nothing tells when, or whether, the person pays there.
        OS().shell().openInBrowser(paymentPage);
        return bought;
    }
    JSON::Element const& failure = JSON::orEmpty(reply);
    switch (std::int32_t const code = codeOf(failure)) {
    case 101:
    case 103:
        return nothingBought;
    case 106:
        return refusedAs106;
    default:
        Log("Tarn7Resource::requestExternalPurchase() : Error %d (%s)\n", code,
            failure.getString("s").c_str());
        return nothingBought;
    }
}

// A failure writes no line to the log, unlike that of the payment page.
std::int32_t Tarn7Resource::requestCreditPurchase(LightweightVector<RemoteAsset> const& assets) {
    if (!syncCart(assets)) {
        return nothingBought;
    }
    Response const reply = commandReply(sendCommand(Command(L"purchase_using_credits")), 0);
    if (!responseFailed(reply)) {
        return bought;
    }
    return codeOf(JSON::orEmpty(reply)) == 106 ? refusedAs106 : nothingBought;
}
