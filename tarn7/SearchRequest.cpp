// A search query as the service's "search" command.

#include "host/preferences/EditorPreferences.h"
#include "host/text/Numbers.h"
#include "tarn7/Command.h"
#include "tarn7/FilterChoices.h"

namespace {

// The filters travel as words of the query. "linesgt:" is strict, so the height goes out one lower and lets
// clips of exactly the chosen height pass.
struct FilterWord {
    char const* preference;
    wchar_t const* word;
    std::int32_t offset;
};

constexpr FilterWord filterWords[] = {
    {tarn7::pricePreference, L"pricelt:", 0},
    {tarn7::heightPreference, L"linesgt:", -1},
    {tarn7::lengthPreference, L"durationgt:", 0},
};

void appendFilterWords(WideString& text) {
    for (FilterWord const& filter : filterWords) {
        std::int32_t const value = prefs().getPreference(filter.preference, std::int32_t{0});
        if (value == 0) {
            continue;
        }
        if (!text.isEmpty()) {
            text += L' ';
        }
        text += filter.word;
        text += Zq::WStringFromInteger(std::int64_t{value} + filter.offset);
    }
}

} // namespace

Tarn7Resource::Response Tarn7Resource::runSearch(SearchQuery const& query) {
    WideString text = getSearchPattern(query);
    appendFilterWords(text);

    Command command(L"search");
    command.addParam("query", text);
    command.addNumber("p", std::int32_t{query.page} - 1);
    command.addNumber("col", 251);
    command.addNumber("sb", 1);
    command.addNumber("no", query.pageSize);
    command.addNumber("bm", 15);

    Response const response = sendCommand(command);
    return responseFailed(response) ? Response() : commandReply(response, 0);
}
