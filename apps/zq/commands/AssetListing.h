// Assets as a table and as JSON, as "search" and its like show them.
#pragma once

#include <string>

#include "apps/zq/Session.h"
#include "apps/zq/terminal/Table.h"
#include "host/json/Builder.h"

namespace zq {

// The members of one asset, without its braces.
void addAssetMembers(JSON::Builder& json, RemoteAsset const& asset, MediaFileRepositoryBase const& base);
// Texts by the number of their attribute.
void addAttributes(JSON::Builder& json, char const* key, LogAttributeMap const& attributes);

// What a list shows of the asset in a column: its display text, failing that the text that stays with it.
[[nodiscard]] std::string assetCell(RemoteAsset const& asset, LogAttribute const& column);
// The repository's columns of these assets, with their numbers in front.
[[nodiscard]] std::string assetTable(LightweightVector<RemoteAsset> const& assets,
                                     LightweightVector<LogAttribute> const& attributes, Screen const& screen);

} // namespace zq
