// The pages of a payment as HTML. Pure text: what is shown comes in, the page goes out, and nothing in a
// title, a name or an input can become markup.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apps/tarn7d/CardForm.h"
#include "apps/tarn7d/Payments.h"

namespace tarn7d {

// The text with everything that has a meaning in HTML written as a reference, also for attribute values.
[[nodiscard]] std::string escapeHtml(std::string_view text);

// What went wrong with the last attempt, shown above the form. All empty at the first sight of it.
struct PaymentAttempt {
    std::vector<CardProblem> problems;
    bool declined = false;
    std::string expiry; // as typed; number and code are not shown again
};

// The cart and the form of an open payment. `path` is the page's own, where the form goes.
[[nodiscard]] std::string paymentFormPage(Payments::View const& view, std::string_view path,
                                          PaymentAttempt const& attempt);

[[nodiscard]] std::string receiptPage(Payments::View const& view);

// A page that says why there is nothing to pay here, for every state but `open`. `path` is the page's own.
[[nodiscard]] std::string paymentStatePage(Payments::State state, std::string_view path);

// The Content-Security-Policy under which these pages work: their own style and the service's pictures, and
// no script at all.
[[nodiscard]] std::string const& paymentPagePolicy();

} // namespace tarn7d
