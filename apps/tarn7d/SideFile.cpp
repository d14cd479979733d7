#include "apps/tarn7d/SideFile.h"

#include <cmath>

#include <toml++/toml.h>

#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/PrivateFile.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

constexpr std::size_t limitBytes = 64 * 1024;
constexpr std::size_t longestKeywords = 2000;
constexpr double highestPrice = 1'000'000;

struct PriceRow {
    int leastHeight;
    std::int64_t price_cents;
};

// Prices of clips whose side file names none, the tallest pictures first.
constexpr PriceRow usualPrices[] = {{2160, 9900}, {1080, 4900}, {720, 1900}, {0, 900}};

std::int64_t usualPrice(int height) {
    for (PriceRow const& row : usualPrices) {
        if (height >= row.leastHeight) {
            return row.price_cents;
        }
    }
    return usualPrices[0].price_cents;
}

std::string joinedKeywords(toml::table const& table) {
    std::string joined;
    if (toml::array const* const list = table["keywords"].as_array()) {
        for (toml::node const& node : *list) {
            if (auto const text = node.value<std::string>()) {
                joined += *text + ' ';
            }
        }
    } else if (auto const text = table["keywords"].value<std::string>()) {
        joined = *text;
    }
    return cleanText(joined, longestKeywords);
}

void applySideFile(std::string const& text, ClipDescription& description) {
    toml::table const table = toml::parse(text);
    if (auto const title = table["title"].value<std::string>()) {
        std::string clean = cleanText(*title);
        if (!clean.empty()) {
            description.title = std::move(clean);
        }
    }
    std::string keywords = joinedKeywords(table);
    if (!keywords.empty()) {
        description.keywords = std::move(keywords);
    }
    if (auto const price = table["price"].value<double>(); price && *price >= 0 && *price <= highestPrice) {
        description.price_cents = std::llround(*price * 100);
    }
}

} // namespace

std::filesystem::path sideFileOf(std::filesystem::path const& footageFile) {
    return std::filesystem::path(footageFile).replace_extension(".toml");
}

ClipDescription describeClip(std::filesystem::path const& footageFolder,
                             std::filesystem::path const& relative, int pictureHeight) {
    ClipDescription description{titleFromFileName(relative.filename().string()),
                                cleanText(relative.parent_path().string(), longestKeywords),
                                usualPrice(pictureHeight)};
    std::filesystem::path const side = sideFileOf(footageFolder / relative);
    std::string const text = readSmallFile(side, limitBytes);
    if (!text.empty()) {
        try {
            applySideFile(text, description);
        } catch (toml::parse_error const& error) {
            logLine("side file " + side.string() + " is not TOML: " + std::string(error.description()));
        }
    }
    return description;
}

} // namespace tarn7d
