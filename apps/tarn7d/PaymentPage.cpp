#include "apps/tarn7d/PaymentPage.h"

#include <array>
#include <cstdio>
#include <ctime>

#include <openssl/evp.h>
#include <openssl/sha.h>

#include "apps/tarn7d/PaymentStyle.h"

namespace tarn7d {

namespace {

std::string dollars(std::int64_t cents) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "$%lld.%02d", static_cast<long long>(cents / 100),
                  static_cast<int>(cents % 100));
    return text.data();
}

std::string dateText(std::int64_t seconds) {
    std::time_t const time = seconds;
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), "%d %B %Y, %H:%M UTC", &parts);
    return text.data();
}

std::string clipCount(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " clip" : " clips");
}

// The whole page around its main part.
std::string page(std::string_view title, std::string_view accountName, std::string_view main) {
    std::string html = "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                       "<meta name=\"robots\" content=\"noindex\">\n<title>";
    html += escapeHtml(title);
    html += " - Tarn7 Footage</title>\n<style>";
    html += paymentStyle;
    html += "</style>\n</head>\n<body>\n<header class=\"bar\"><span class=\"name\">Tarn<span>7</span> "
            "Footage</span>";
    if (!accountName.empty()) {
        html += "<span class=\"account\">Account <b><bdi>" + escapeHtml(accountName) + "</bdi></b></span>";
    }
    html += "</header>\n<main>\n<h1>" + escapeHtml(title) + "</h1>\n";
    html += main;
    html += "</main>\n<footer><p>A demonstration service on this computer. It moves no money.</p></footer>\n"
            "</body>\n</html>\n";
    return html;
}

constexpr std::string_view demoNotice =
    "<div class=\"notice demo\"><p><strong>This is a demonstration.</strong> No money is moved. "
    "Do not enter a real card.</p></div>\n";

std::string picture(std::int64_t clipId) {
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), "%09lld", static_cast<long long>(clipId));
    return std::string("<span class=\"picture\"><img src=\"/icons/") + number.data() +
           "_iconm.jpeg\" alt=\"\" width=\"96\" height=\"54\" loading=\"lazy\"></span>";
}

std::string clipItem(std::int64_t clipId, std::string_view title, std::string_view facts,
                     std::string_view price) {
    std::string html = "<li>" + picture(clipId) + "<span><span class=\"title\"><bdi>" + escapeHtml(title) +
                       "</bdi></span><br><span class=\"facts\">" + escapeHtml(facts) +
                       "</span></span><span class=\"price\">";
    html += price;
    html += "</span></li>\n";
    return html;
}

std::string factsOf(Clip const& clip) {
    std::int64_t const seconds = (clip.media.duration_ms + 500) / 1000;
    std::array<char, 32> length{};
    std::snprintf(length.data(), length.size(), "%lld:%02d", static_cast<long long>(seconds / 60),
                  static_cast<int>(seconds % 60));
    std::string facts = std::string(length.data()) + ", " + std::to_string(clip.media.width) + " \u00d7 " +
                        std::to_string(clip.media.height);
    std::string const rate = displayRateText(clip.media.rate);
    return rate.empty() ? facts : facts + ", " + rate + " fps";
}

std::string cartCard(Cart const& cart) {
    std::string html = "<section class=\"card\" aria-labelledby=\"cart\"><h2 id=\"cart\">Your cart: " +
                       clipCount(cart.lines.size()) + "</h2>\n<ul class=\"clips\">\n";
    for (CartLine const& line : cart.lines) {
        html += clipItem(line.clip.id, line.clip.description.title, factsOf(line.clip),
                         line.owned ? "<span class=\"owned\">already yours</span>"
                                    : dollars(line.charge_cents()));
    }
    html += "</ul>\n<div class=\"bar total\"><span>Total</span><span class=\"price\">" +
            dollars(cart.total_cents()) + "</span></div></section>\n";
    return html;
}

struct FieldText {
    CardField field;
    std::string_view id;
    std::string_view label;
    std::string_view mode;
    int longest;
};

constexpr FieldText numberField{CardField::number, "number", "Card number", "numeric", 40};
constexpr FieldText expiryField{CardField::expiry, "expiry", "Expires", "text", 12};
constexpr FieldText codeField{CardField::code, "code", "Security code", "numeric", 8};

FieldText const& fieldText(CardField field) {
    return field == CardField::number ? numberField : field == CardField::expiry ? expiryField : codeField;
}

std::string problemOf(CardField field, PaymentAttempt const& attempt) {
    for (CardProblem const& problem : attempt.problems) {
        if (problem.field == field) {
            return problem.text;
        }
    }
    return {};
}

std::string input(FieldText const& field, std::string_view value, std::string_view hint,
                  PaymentAttempt const& attempt) {
    std::string const id(field.id);
    std::string const problem = problemOf(field.field, attempt);
    std::string html = "<div class=\"field\"><label for=\"" + id + "\">" + std::string(field.label) +
                       "</label><input id=\"" + id + "\" name=\"" + id + "\" value=\"" + escapeHtml(value) +
                       "\" inputmode=\"" + std::string(field.mode) + "\" maxlength=\"" +
                       std::to_string(field.longest) + "\" autocomplete=\"off\" required";
    html += " aria-describedby=\"" + (problem.empty() ? "" : id + "-problem ") + id + "-hint\"";
    html += problem.empty() ? ">" : " aria-invalid=\"true\">";
    if (!problem.empty()) {
        html += "<p class=\"wrong\" id=\"" + id + "-problem\">" + escapeHtml(problem) + "</p>";
    }
    return html + "<p class=\"hint\" id=\"" + id + "-hint\">" + std::string(hint) + "</p></div>\n";
}

std::string problemNotice(PaymentAttempt const& attempt) {
    if (attempt.declined) {
        return "<div class=\"notice problem\" role=\"alert\"><p><strong>The card was declined.</strong> "
               "Nothing was "
               "charged, and your cart is as it was. Try the other demonstration card.</p></div>\n";
    }
    if (attempt.problems.empty()) {
        return {};
    }
    std::string html =
        "<div class=\"notice problem\" role=\"alert\"><p><strong>Nothing was charged.</strong> "
        "Please look at:</p><ul>";
    for (CardProblem const& problem : attempt.problems) {
        FieldText const& field = fieldText(problem.field);
        html += "<li><a href=\"#" + std::string(field.id) + "\">" + std::string(field.label) +
                "</a>: " + escapeHtml(problem.text) + "</li>";
    }
    return html + "</ul></div>\n";
}

std::string cardFields(PaymentAttempt const& attempt) {
    std::string const hint = "<code>" + std::string(acceptedCard) + "</code> pays, <code>" +
                             std::string(declinedCard) + "</code> is declined.";
    return input(numberField, "", hint, attempt) + "<div class=\"row\">\n" +
           input(expiryField, attempt.expiry, "Month/year, as 09/30", attempt) +
           input(codeField, "", "Any three digits", attempt) + "</div>\n";
}

std::string base64(unsigned char const* bytes, std::size_t size) {
    std::string text((size + 2) / 3 * 4 + 1, '\0');
    int const length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes, static_cast<int>(size));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace

std::string escapeHtml(std::string_view text) {
    std::string result;
    for (char const c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\'':
            result += "&#39;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

std::string paymentFormPage(Payments::View const& view, std::string_view path,
                            PaymentAttempt const& attempt) {
    bool const isFree = view.cart.total_cents() == 0;
    std::string main = problemNotice(attempt);
    main += demoNotice;
    main += "<div class=\"columns\">\n" + cartCard(view.cart) +
            "<section class=\"card\" aria-labelledby=\"pay\"><h2 id=\"pay\">" +
            (isFree ? "Nothing to pay" : "Pay by demonstration card") +
            "</h2>\n<form method=\"post\" action=\"" + escapeHtml(path) + "\" autocomplete=\"off\">\n";
    main += isFree ? "<p>Nothing in this cart costs anything.</p>\n" : cardFields(attempt);
    main += "<button type=\"submit\">" +
            (isFree ? "Take over the clips" : "Pay " + dollars(view.cart.total_cents())) +
            "</button>\n</form>\n<p class=\"hint\">This page is good until " +
            escapeHtml(dateText(view.expires)) + ".</p></section>\n</div>\n";
    return page("Pay for your clips", view.accountName, main);
}

std::string receiptPage(Payments::View const& view) {
    Receipt const& receipt = view.receipt;
    std::string main = "<div class=\"card narrow\">\n";
    if (receipt.lines.empty()) {
        main += "<p>Everything in the cart was yours already, so nothing was charged.</p>\n";
    } else {
        main += "<dl class=\"facts-list\"><dt>Order</dt><dd>" + std::to_string(receipt.number) +
                "</dd><dt>Date</dt><dd>" + escapeHtml(dateText(receipt.made)) + "</dd><dt>Clips</dt><dd>" +
                std::to_string(receipt.lines.size()) + "</dd></dl>\n<ul class=\"clips\">\n";
        for (Receipt::Line const& line : receipt.lines) {
            main += clipItem(line.clipId, line.title, "Clip " + std::to_string(line.clipId),
                             dollars(line.price_cents));
        }
        main += "</ul>\n<div class=\"bar total\"><span>Paid</span><span class=\"price\">" +
                dollars(receipt.total_cents) +
                "</span></div>\n<p class=\"hint\">Paid by demonstration card: no money was moved.</p>\n";
    }
    main +=
        "</div>\n<p></p><p>The clips are yours now. You can close this page: your editor finds them in the "
        "list of what you own.</p>\n";
    return page("Thank you", view.accountName, main);
}

std::string paymentStatePage(Payments::State state, std::string_view path) {
    struct {
        std::string_view title;
        std::string text;
    } words{"This payment page does not exist",
            "Check the address, or begin the purchase again in your editor. Nothing was charged."};
    switch (state) {
    case Payments::State::unknown:
    case Payments::State::open:
        break;
    case Payments::State::expired:
        words = {"This payment page has expired",
                 "Nothing was charged, and your cart is as it was. Begin the purchase again in your editor."};
        break;
    case Payments::State::changed:
        words = {
            "Your cart has changed",
            "The cart or a price is no longer what this page was made for, so nothing was charged. Begin the "
            "purchase again in your editor to see what it costs now."};
        break;
    case Payments::State::blocked:
        words = {"Payments of this account are blocked",
                 "Nothing was charged. Ask whoever runs this service."};
        break;
    case Payments::State::paid:
        words = {"This cart is already paid", "It was paid once, and nothing was charged again. <a href=\"" +
                                                  escapeHtml(path) + "/receipt\">Show the receipt</a>"};
        break;
    }
    return page(words.title, {}, "<div class=\"card narrow\"><p>" + words.text + "</p></div>\n");
}

std::string const& paymentPagePolicy() {
    static std::string const policy = [] {
        std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
        SHA256(reinterpret_cast<unsigned char const*>(paymentStyle.data()), paymentStyle.size(),
               digest.data());
        return "default-src 'none'; style-src 'sha256-" + base64(digest.data(), digest.size()) +
               "'; img-src 'self'; form-action 'self'; base-uri 'none'; frame-ancestors 'none'";
    }();
    return policy;
}

} // namespace tarn7d
