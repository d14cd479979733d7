// The language of the search text: words that all must match, and filter words.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace tarn7d {

struct ClipQuery {
    // The words as an expression of SQLite's full-text search: each a quoted prefix phrase, so that nothing
    // in a word is read as an operator. Empty if the text holds no word.
    std::string expression;
    // At most this price. The filter's choices are the highest price that a buyer would pay, so the price
    // itself belongs to it although the word says "lt".
    std::int64_t highestPrice_cents = std::numeric_limits<std::int64_t>::max();
    // More lines than this.
    std::int64_t linesAbove = -1;
    // Longer than this.
    std::int64_t durationAbove_ms = -1;

    friend bool operator==(ClipQuery const&, ClipQuery const&) = default;
};

// Whether filter words are that, or words as all others.
enum class FilterWords { read, ordinary };

// Reads a search text. The filter words "pricelt:N" (dollars), "linesgt:N" and "durationgt:N" (seconds), N a
// whole number, may stand anywhere; of several of a kind the strictest holds. A filter word without a number
// is an ordinary word. A word without a letter, digit or symbol is passed over. Words behind the 32nd are
// passed over.
[[nodiscard]] ClipQuery parseClipQuery(std::string_view text, FilterWords filterWords = FilterWords::read);

} // namespace tarn7d
