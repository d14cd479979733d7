// What the result lists of the resources have in common: their first column, the log attributes of a clip,
// the number of pages.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "host/attributes/LogAttribute.h"
#include "host/object/LightweightVector.h"
#include "repository/RemoteAsset.h"

// The columns of a results list: the first has the host's heading for the names of clips, and none can be
// changed by the user. At least one. Thread: any.
[[nodiscard]] ZQ_API LightweightVector<LogAttribute>
resultColumns(std::initializer_list<LogAttribute> attributes);

// Log attributes that every clip of a service has. Made once for a list. Thread: one at a time.
class ZQ_API ClipAttributes {
public:
    ClipAttributes(WideString const& shortName, NarrowString source);

    // Gives the asset its name, its clip id (the short name and the number, as "T7123") and its source, in
    // this order.
    void addTo(RemoteAsset& asset, NarrowString name, std::int32_t number) const;

private:
    LogAttribute const name_{LogAttribute::eName};
    LogAttribute const clipId_{LogAttribute::eClipId};
    LogAttribute const source_{LogAttribute::eSource};
    NarrowString const shortName_;
    NarrowString const sourceName_;
};

// Pages of that size that hold all assets, by single-precision division; 0 for a page size of 0, as no number
// of pages holds them then. Thread: any.
[[nodiscard]] ZQ_API std::uint16_t countPages(std::uint16_t totalCount, std::uint16_t pageSize) noexcept;
