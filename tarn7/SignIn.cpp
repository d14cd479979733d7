// The account: the sign-in forms, signing in and out, the session's two numbers.

#include "ServiceValues.h"
#include "host/json/Builder.h"
#include "host/json/NumberMembers.h"
#include "host/preferences/EditorPreferences.h"
#include "host/resources/resourceStr.h"
#include "host/web/HTMLUtils.h"
#include "repository/SignInForm.h"
#include "tarn7/Command.h"

namespace {

constexpr char lastUser[] = "T7 User";

} // namespace

WideString Tarn7Resource::getLoginForm() {
    return makeSignInForm(lastUser);
}

WideString Tarn7Resource::getLoginLinkForm() {
    WideString legend = resourceStrW(13658);
    legend.replaceAll(L"$WEBSITE$", HTMLUtils::makeLink(Tarn7Server, addPartnerTags(Tarn7LoginURL)).view());

    JSON::Builder form;
    form.startChild(nullptr);
    form.startArray(nullptr);
    form.startChild(nullptr);
    form.add("name", L"link", true);
    form.add("legend",
             HTMLUtils::addParagraphTags(legend, HTMLUtils::screenDefault, HTMLUtils::screenDefault), true);
    form.add("type", L"label", true);
    form.endChild();
    form.endArray();
    form.endChild();
    return form.getOutput();
}

std::int32_t Tarn7Resource::login(configb const& values) {
    WideString const user = typedValue(values, "username");
    Command command(L"login");
    command.addParam("username", user);
    command.addParam("password", typedValue(values, "password"));
    Response const response = sendCommand(command);
    Response const reply = commandReply(response, 0);

    if (responseFailed(response)) {
        NarrowString const reason = JSON::orEmpty(reply).getString("s");
        if (reason.contains("Wrong password")) {
            return 7;
        }
        return reason.contains("Failed to find user") ? 2 : 17;
    }
    if (!reply) {
        return 17;
    }
    // Both numbers are taken even if the first is missing: an earlier user then keeps the name and sends -1,
    // which the service refuses, until somebody signs in.
    sessionContext = JSON::getInt32(*reply, "cx");
    sessionMarker = JSON::getInt32(*reply, "cm");
    if (sessionContext == -1) {
        return 17;
    }
    signedInUser = user;
    searchResultCache.clear();
    prefs().setPreference(lastUser, signedInUser);
    return 0;
}

void Tarn7Resource::logout() {
    if (signedInUser.isEmpty()) {
        return;
    }
    // Goes out while the session is valid. Whatever comes back, the session ends here.
    (void)sendCommand(Command(L"logout"));
    signedInUser.clear();
    purchasedIds.clear(); // without the lock, unlike the refill
    searchResultCache.clear();
    sessionContext = -1;
    sessionMarker = -1;
}
