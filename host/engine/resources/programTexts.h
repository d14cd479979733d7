// Numbers of the texts in which a program of this host tells what came of an operation.
#pragma once

#include <cstdint>

#include "host/resources/resourceStr.h"

namespace engine::texts {

inline constexpr ResId notSignedIn = 30001;
inline constexpr ResId signedInAs = 30002; // holds "$USER$"
inline constexpr ResId signedOut = 30003;
inline constexpr ResId cancelled = 30004;
inline constexpr ResId nothingFound = 30005;

inline constexpr ResId loginDone = 30100;
inline constexpr ResId loginUnknownUser = 30102;
inline constexpr ResId loginWrongPassword = 30107;
inline constexpr ResId loginFailed = 30117;

inline constexpr ResId connectDone = 30200;
inline constexpr ResId connectFailed = 30211;

inline constexpr ResId purchaseNothing = 30300;
inline constexpr ResId purchaseDone = 30302;
inline constexpr ResId purchaseRefused = 30303;
inline constexpr ResId purchaseAtPaymentPage = 30312;

// The text of a result of iMediaFileRepository::login. Thread: any.
[[nodiscard]] constexpr ResId ofLogin(std::int32_t code) noexcept {
    return code == 0   ? loginDone
           : code == 2 ? loginUnknownUser
           : code == 7 ? loginWrongPassword
                       : loginFailed;
}

// The text of a result of connect.
[[nodiscard]] constexpr ResId ofConnect(std::int32_t code) noexcept {
    return code == 0 ? connectDone : connectFailed;
}

// The texts of the results of the two purchase operations.
[[nodiscard]] constexpr ResId ofCreditPurchase(std::int32_t code) noexcept {
    return code == 2 ? purchaseDone : code == 3 ? purchaseRefused : purchaseNothing;
}
[[nodiscard]] constexpr ResId ofExternalPurchase(std::int32_t code) noexcept {
    return code == 2 ? purchaseAtPaymentPage : ofCreditPurchase(code);
}

} // namespace engine::texts
