// The records of searching and browsing.
#pragma once

#include <cstdint>

#include "host/object/LightweightVector.h"
#include "host/object/Ptr.h"
#include "repository/RemoteAsset.h"

namespace GenericParam {
class iParam;
}

// One group of parameters that a search screen shows.
struct SearchOptionGroup {
    WideString legend;
    LightweightVector<Zq::Ptr<GenericParam::iParam>> params; // in display order
};

struct SearchQuery {
    std::uint16_t page = 1;      // the first is 1
    std::uint16_t pageSize = 25; // assets a page
    WideString words;            // as the person typed them; read through getSearchPattern
};

struct BrowseQuery {
    WideString path; // one of getRootPaths, or a place below
    std::uint16_t page = 1;
    std::uint16_t pageSize = 25;
};

// A page of assets; a search that fails gives the empty record.
struct SearchResults {
    LightweightVector<RemoteAsset> assets;
    std::uint16_t pageCount = 0;
    std::uint16_t totalCount = 0;
    std::uint16_t firstIndex = 0; // left 0 by the repositories
    WideString nextPage;          // left empty
    WideString message;           // left empty
    std::int32_t status = 0;      // left 0
};

struct ImportResult {
    LightweightVector<Cookie> edits;         // one for each asset that became an edit
    LightweightVector<WideString> failedIds; // ids of the others
};
