// The card form of the payment page: what was typed, and what is wrong with it.
//
// Payments are a demonstration. Only the two cards below are taken, so that nobody pays, or tries to pay,
// with a real one; what is typed is neither kept nor logged.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn7d {

inline constexpr std::string_view acceptedCard = "4242 4242 4242 4242";
inline constexpr std::string_view declinedCard = "4000 0000 0000 0002";

struct CardForm {
    std::string number; // blanks and hyphens between the digits do not matter
    std::string expiry; // "MM/YY" or "MM/YYYY", blanks around the stroke do not matter
    std::string code;   // three or four digits
};

enum class CardField { number, expiry, code };

struct CardProblem {
    CardField field;
    std::string text; // for the buyer
};

// What is wrong, in the order of the fields; empty for a card that can be charged. `now` is in seconds since
// 1970; a card is good until the end of its month in UTC.
[[nodiscard]] std::vector<CardProblem> checkCard(CardForm const& form, std::int64_t now);

// True for the card that a bank would decline. The form has no problem.
[[nodiscard]] bool isDeclined(CardForm const& form);

} // namespace tarn7d
