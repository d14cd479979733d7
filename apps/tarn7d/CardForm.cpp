#include "apps/tarn7d/CardForm.h"

#include <chrono>
#include <optional>

#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

constexpr std::size_t leastDigits = 12;
constexpr std::size_t mostDigits = 19;

bool isDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string withoutGaps(std::string_view text) {
    std::string result;
    for (char const c : text) {
        if (c != ' ' && c != '-') {
            result += c;
        }
    }
    return result;
}

// The check digit of ISO/IEC 7812: from the right, every second digit doubled, the sum a multiple of ten.
bool hasGoodCheckDigit(std::string_view digits) {
    int sum = 0;
    bool doubled = false;
    for (std::size_t i = digits.size(); i-- > 0; doubled = !doubled) {
        int const digit = (digits[i] - '0') * (doubled ? 2 : 1);
        sum += digit > 9 ? digit - 9 : digit;
    }
    return sum % 10 == 0;
}

std::string problemOfNumber(std::string_view typed) {
    std::string const digits = withoutGaps(typed);
    if (digits.empty()) {
        return "Enter the number of a demonstration card.";
    }
    if (!isDigits(digits) || digits.size() < leastDigits || digits.size() > mostDigits) {
        return "A card number has 12 to 19 digits.";
    }
    if (!hasGoodCheckDigit(digits)) {
        return "This number is mistyped: its check digit does not fit.";
    }
    if (digits != withoutGaps(acceptedCard) && digits != withoutGaps(declinedCard)) {
        return "This is not a demonstration card. Never enter a real card here.";
    }
    return {};
}

std::optional<std::chrono::year_month> parseExpiry(std::string_view typed) {
    std::string const text = withoutGaps(typed);
    std::size_t const stroke = text.find('/');
    if (stroke == std::string::npos) {
        return std::nullopt;
    }
    std::string_view const month = std::string_view(text).substr(0, stroke);
    std::string_view const year = std::string_view(text).substr(stroke + 1);
    std::int64_t monthNumber = 0;
    std::int64_t yearNumber = 0;
    if (!isDigits(month) || month.size() > 2 || !isDigits(year) || (year.size() != 2 && year.size() != 4) ||
        !parseInteger(month, monthNumber) || !parseInteger(year, yearNumber)) {
        return std::nullopt;
    }
    constexpr std::int64_t century = 2000;
    std::chrono::year_month const expiry(
        std::chrono::year(static_cast<int>(year.size() == 2 ? century + yearNumber : yearNumber)),
        std::chrono::month(static_cast<unsigned>(monthNumber)));
    return expiry.ok() ? std::optional(expiry) : std::nullopt;
}

std::string problemOfExpiry(std::string_view typed, std::int64_t now) {
    auto const expiry = parseExpiry(typed);
    if (!expiry) {
        return "Enter month and year, as 09/30.";
    }
    std::chrono::sys_days const today =
        std::chrono::floor<std::chrono::days>(std::chrono::sys_seconds(std::chrono::seconds(now)));
    if (today > std::chrono::sys_days(*expiry / std::chrono::last)) {
        return "This card has expired.";
    }
    return {};
}

std::string problemOfCode(std::string_view typed) {
    bool const good = isDigits(typed) && (typed.size() == 3 || typed.size() == 4);
    return good ? "" : "The code has three or four digits.";
}

} // namespace

std::vector<CardProblem> checkCard(CardForm const& form, std::int64_t now) {
    std::vector<CardProblem> problems;
    auto const note = [&problems](CardField field, std::string text) {
        if (!text.empty()) {
            problems.push_back({field, std::move(text)});
        }
    };
    note(CardField::number, problemOfNumber(form.number));
    note(CardField::expiry, problemOfExpiry(form.expiry, now));
    note(CardField::code, problemOfCode(form.code));
    return problems;
}

bool isDeclined(CardForm const& form) {
    return withoutGaps(form.number) == withoutGaps(declinedCard);
}

} // namespace tarn7d
