#include "apps/tarn7d/PaymentRoutes.h"

#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/MediaResponse.h"
#include "apps/tarn7d/PaymentPage.h"

namespace tarn7d {

namespace {

using State = Payments::State;

std::string pathOf(std::string const& token) {
    return "/pay/" + token;
}

// The address is the key to the page: it goes into no cache and no Referer header, and the page into no
// other's frame.
void addPageHeaders(httplib::Response& response) {
    response.set_header("Content-Security-Policy", paymentPagePolicy());
    response.set_header("Cache-Control", "no-store");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("X-Frame-Options", "DENY");
    response.set_header("Cross-Origin-Opener-Policy", "same-origin");
}

void sendPage(httplib::Response& response, int status, std::string html) {
    addPageHeaders(response);
    sendText(response, status, std::move(html), "text/html; charset=utf-8");
}

int statusOf(State state) {
    switch (state) {
    case State::open:
        return 200;
    case State::unknown:
        return 404;
    case State::expired:
        return 410;
    case State::changed:
    case State::paid:
        return 409;
    case State::blocked:
        return 403;
    }
    return 404;
}

} // namespace

PaymentRoutes::PaymentRoutes(Payments& payments, WallClock clock)
    : payments_(payments), clock_(std::move(clock)) {}

void PaymentRoutes::showForm(std::string const& token, httplib::Response& response) {
    Payments::View const view = payments_.view(token);
    if (view.state == State::open) {
        sendPage(response, 200, paymentFormPage(view, pathOf(token), {}));
    } else {
        sendPage(response, view.state == State::paid ? 200 : statusOf(view.state),
                 paymentStatePage(view.state, pathOf(token)));
    }
}

void PaymentRoutes::pay(std::string const& token, httplib::Request const& request,
                        httplib::Response& response) {
    Payments::View const before = payments_.view(token);
    // Only what was open is paid: a cart that comes back between here and there has not been paid for.
    if (before.state != State::open) {
        sendPage(response, statusOf(before.state), paymentStatePage(before.state, pathOf(token)));
        return;
    }
    if (before.cart.total_cents() > 0) {
        CardForm const form{request.get_param_value("number"), request.get_param_value("expiry"),
                            request.get_param_value("code")};
        PaymentAttempt attempt{checkCard(form, clock_()), false, form.expiry};
        attempt.declined = attempt.problems.empty() && isDeclined(form);
        if (attempt.declined || !attempt.problems.empty()) {
            sendPage(response, attempt.declined ? 402 : 422, paymentFormPage(before, pathOf(token), attempt));
            return;
        }
    }
    Payments::View const after = payments_.pay(token);
    if (!after.paidNow) {
        sendPage(response, statusOf(after.state), paymentStatePage(after.state, pathOf(token)));
        return;
    }
    if (after.receipt.number != 0) {
        logLine("order " + std::to_string(after.receipt.number) + " of " + after.accountName +
                " was paid on its page");
    }
    addPageHeaders(response);
    response.set_header("Location", pathOf(token) + "/receipt");
    sendText(response, 303, "paid\n", "text/plain; charset=utf-8");
}

void PaymentRoutes::showReceipt(std::string const& token, httplib::Response& response) {
    Payments::View const view = payments_.view(token);
    if (view.state == State::paid) {
        sendPage(response, 200, receiptPage(view));
    } else {
        // Whoever looks for a receipt too early is led to what there is to pay.
        showForm(token, response);
    }
}

} // namespace tarn7d
