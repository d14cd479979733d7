// The payment pages over HTTP: which page a token and a form lead to, and with which status.
#pragma once

#include <httplib.h>

#include "apps/tarn7d/Payments.h"
#include "apps/tarn7d/WallClock.h"

namespace tarn7d {

// Any thread. The payments outlive it. For requests to /pay/TOKEN and /pay/TOKEN/receipt; anything else in
// the place of a token is an unknown one.
class PaymentRoutes {
public:
    explicit PaymentRoutes(Payments& payments, WallClock clock = systemSeconds);

    void showForm(std::string const& token, httplib::Response& response);
    // The form's fields are the request's parameters.
    void pay(std::string const& token, httplib::Request const& request, httplib::Response& response);
    void showReceipt(std::string const& token, httplib::Response& response);

private:
    Payments& payments_;
    WallClock const clock_;
};

} // namespace tarn7d
