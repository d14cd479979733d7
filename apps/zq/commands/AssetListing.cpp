#include "apps/zq/commands/AssetListing.h"

#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Labels.h"

namespace zq {

void addAttributes(JSON::Builder& json, char const* key, LogAttributeMap const& attributes) {
    json.startChild(key);
    for (LogAttributeMap::Entry const& entry : attributes.entries()) {
        addText(json, std::to_string(entry.type).c_str(), entry.value.view());
    }
    json.endChild();
}

void addAssetMembers(JSON::Builder& json, RemoteAsset const& asset, MediaFileRepositoryBase const& base) {
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
}

std::string assetCell(RemoteAsset const& asset, LogAttribute const& column) {
    NarrowString const shown = asset.displayAttributes.find(column);
    return std::string((shown.isEmpty() ? asset.logAttributes.find(column) : shown).view());
}

std::string assetTable(LightweightVector<RemoteAsset> const& assets,
                       LightweightVector<LogAttribute> const& attributes, Screen const& screen) {
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
    for (RemoteAsset const& asset : assets) {
        std::vector<std::string> row{utf8(asset.id)};
        for (LogAttribute const& attribute : attributes) {
            row.push_back(assetCell(asset, attribute));
        }
        table.addRow(row);
    }
    return table.render(screen);
}

} // namespace zq
