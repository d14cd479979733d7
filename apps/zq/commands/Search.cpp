// "search": a page of clips.

#include <algorithm>
#include <limits>

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/commands/Labels.h"
#include "apps/zq/terminal/Picture.h"
#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/Table.h"
#include "host/tasks/BackgroundTaskQueueBase.h"

namespace zq {

namespace {

constexpr int pictureColumns = 40;

void addAttributes(JSON::Builder& json, char const* key, LogAttributeMap const& attributes) {
    json.startChild(key);
    for (LogAttributeMap::Entry const& entry : attributes.entries()) {
        addText(json, std::to_string(entry.type).c_str(), entry.value.view());
    }
    json.endChild();
}

void addAsset(JSON::Builder& json, RemoteAsset const& asset, MediaFileRepositoryBase const& base) {
    json.startChild(nullptr);
    json.add("id", asset.id, true);
    addNumber(json, "frameRate", static_cast<std::uint32_t>(asset.frameRate));
    json.add("frameRateText", Zq::getDisplayString(asset.frameRate), true);
    addNumber(json, "videoChannels", asset.videoChannels);
    addNumber(json, "audioChannels", asset.audioChannels);
    json.add("mediaExtension", asset.mediaExtension, true);
    json.add("proxyLocation", asset.proxyLocation, true);
    json.add("proxyExtension", asset.proxyExtension, true);
    json.add("purchased", base.isPurchased(asset));
    addAttributes(json, "display", asset.displayAttributes);
    addAttributes(json, "log", asset.logAttributes);
    json.add("thumbnailUrl", base.describeRemoteLocation(asset, MediaFileRepositoryBase::eThumbnail), true);
    json.add("previewUrl", base.describeRemoteLocation(asset, MediaFileRepositoryBase::ePreview), true);
    json.add("localPath", base.describeLocalMediaLocation(asset, MediaFileRepositoryBase::eFullMedia), true);
    json.endChild();
}

// What the list shows of the asset in a column: its display text, failing that the text that stays with it.
std::string cell(RemoteAsset const& asset, LogAttribute const& column) {
    NarrowString const shown = asset.displayAttributes.find(column);
    return std::string((shown.isEmpty() ? asset.logAttributes.find(column) : shown).view());
}

std::string listing(SearchResults const& results, LightweightVector<LogAttribute> const& attributes,
                    Screen const& screen) {
    std::vector<Table::Column> columns{{"Id", Table::Align::right}};
    for (LogAttribute const& attribute : attributes) {
        bool const isNumber = attribute.getType() == LogAttribute::ePrice ||
                              attribute.getType() == LogAttribute::eFrameRate ||
                              attribute.getFieldType() == DBFieldTypes::duration;
        columns.push_back({utf8(label(attribute.getDisplayName())),
                           isNumber ? Table::Align::right : Table::Align::left,
                           attribute.getType() == LogAttribute::eName});
    }
    Table table(std::move(columns));
    for (RemoteAsset const& asset : results.assets) {
        std::vector<std::string> row{utf8(asset.id)};
        for (LogAttribute const& attribute : attributes) {
            row.push_back(cell(asset, attribute));
        }
        table.addRow(row);
    }
    return table.render(screen);
}

std::string pictures(Session& session, SearchResults const& results) {
    if (!session.screen().hasTrueColour) {
        return "no pictures: they need a terminal with 24-bit colours (COLORTERM=truecolor)\n";
    }
    int const limit = session.screen().columns;
    std::string text;
    for (RemoteAsset const& asset : results.assets) {
        if (BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling) {
            throw CommandError("interrupted");
        }
        text += plainText(utf8(asset.id) + "  " + cell(asset, LogAttribute(LogAttribute::eName))) + "\n";
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
            reply.text = listing(results, base.getLogAttributes(), session.screen());
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
                addAsset(json, asset, base);
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
