// A clip of a repository as the panel's JSON. Thread: the desk's.
#pragma once

#include "apps/zq/Session.h"
#include "apps/zq/panel/RepositoryDesk.h"
#include "host/json/Builder.h"

namespace zq::panel {

// The edit that the project has of the clip; the null cookie where it has none.
[[nodiscard]] Cookie editOf(Session& session, RemoteAsset const& asset);

// The clip as an object without a name.
void addClip(JSON::Builder& json, Session& session, RepositoryDesk const& desk, RemoteAsset const& asset);

struct PageOfClips {
    unsigned page = 1;
    std::size_t pageSize = 0;
    std::size_t pageCount = 0;
    std::size_t totalCount = 0;
};
// The figures of a page are what a service tells, and clips that are there count whatever it tells: up to the
// end of the page's clips there are at least as many, on at least as many pages. Thread: the desk's.
[[nodiscard]] std::string pageJson(Session& session, RepositoryDesk const& desk, PageOfClips const& told,
                                   LightweightVector<RemoteAsset> const& clips);

} // namespace zq::panel
