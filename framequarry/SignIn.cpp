// The sign-in forms. Nobody is signed in: the service's account interface is not known to this client, so
// every attempt fails, and the search needs no user.

#include "framequarry/FrameQuarryResource.h"
#include "repository/SignInForm.h"

WideString FrameQuarryResource::getLoginForm() {
    return makeSignInForm("FQ User");
}

WideString FrameQuarryResource::getLoginLinkForm() {
    return {};
}

std::int32_t FrameQuarryResource::login(configb const& values) {
    (void)typedValue(values, "username");
    (void)typedValue(values, "password");
    return 17;
}

void FrameQuarryResource::logout() {}
