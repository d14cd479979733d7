// "search": a page of clips.

#include <algorithm>
#include <limits>

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/terminal/Picture.h"
#include "apps/zq/terminal/PlainText.h"
#include "host/HostServices.h"
#include "host/engine/Engine.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/files/iCacheStore.h"
#include "host/tasks/BackgroundTaskQueueBase.h"

namespace zq {

namespace {

constexpr int pictureColumns = 40;

std::string pictures(Session& session, SearchResults const& results) {
    if (!session.screen().hasTrueColour) {
        return "no pictures: they need a terminal with 24-bit colours (COLORTERM=truecolor)\n";
    }
    int const limit = session.screen().columns;
    // All at once: one by one, each picture would cost the distance to the server.
    if (iCacheStore* const cache = installedHost().cache) {
        std::vector<WideString> addresses;
        for (RemoteAsset const& asset : results.assets) {
            addresses.push_back(
                session.base().describeRemoteLocation(asset, MediaFileRepositoryBase::eThumbnail));
        }
        session.engine().network().prefetch(addresses, *cache);
    }
    std::string text;
    for (RemoteAsset const& asset : results.assets) {
        if (BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling) {
            throw CommandError("interrupted");
        }
        text += plainText(utf8(asset.id) + "  " + assetCell(asset, LogAttribute(LogAttribute::eName))) + "\n";
        Zq::Ptr<iHostImage> const image = session.connected().getThumbnail(asset);
        text += image ? halfBlockPicture(*image, limit > 0 ? std::min(limit, pictureColumns) : pictureColumns)
                      : std::string("(no picture)\n");
    }
    return text;
}

std::string footer(SearchResults const& results, unsigned page) {
    if (results.totalCount == 0) {
        return "no clips found\n";
    }
    return "page " + std::to_string(page) + " of " + std::to_string(results.pageCount) + ", " +
           std::to_string(results.totalCount) + (results.totalCount == 1 ? " clip\n" : " clips\n");
}

class Search final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("WORDS", words_, "what to look for; nothing finds everything");
        addNumberOption(options, "--page", page_, "number of the page");
        addNumberOption(options, "--page-size", pageSize_, "clips a page");
        options.add_flag("--pictures", pictures_, "show the pictures, where the terminal can");
    }

    Reply run(Session& session) override {
        SearchQuery query;
        query.page = static_cast<std::uint16_t>(page_);
        query.pageSize = static_cast<std::uint16_t>(pageSize_);
        for (std::string const& word : words_) {
            query.words += query.words.isEmpty() ? wide(word) : L" " + wide(word);
        }
        MediaFileRepositoryBase const& base = session.base();
        SearchResults const results = session.search(query);
        Reply reply;
        if (!results.assets.empty()) {
            reply.text = assetTable(results.assets, base.getLogAttributes(), session.screen());
        }
        if (pictures_) {
            reply.text += pictures(session, results);
        }
        reply.text += footer(results, page_);
        reply.members = [results, page = page_, pageSize = pageSize_, &base](JSON::Builder& json) {
            addNumber(json, "page", page);
            addNumber(json, "pageSize", pageSize);
            addNumber(json, "pageCount", results.pageCount);
            addNumber(json, "totalCount", results.totalCount);
            json.startArray("assets");
            for (RemoteAsset const& asset : results.assets) {
                json.startChild(nullptr);
                addAssetMembers(json, asset, base);
                json.endChild();
            }
            json.endArray();
        };
        return reply;
    }

private:
    static void addNumberOption(CLI::App& options, char const* name, unsigned& value, char const* help) {
        constexpr unsigned largest = std::numeric_limits<std::uint16_t>::max();
        CLI::Validator range = CLI::Range(1U, largest);
        range.description("");
        options.add_option(name, value, help + (", from 1 to " + std::to_string(largest)))
            ->check(range)
            ->type_name("N")
            ->capture_default_str();
    }

    std::vector<std::string> words_;
    unsigned page_ = SearchQuery{}.page;
    unsigned pageSize_ = SearchQuery{}.pageSize;
    bool pictures_ = false;
};

} // namespace

std::unique_ptr<Command> makeSearch() {
    return std::make_unique<Search>();
}

} // namespace zq
