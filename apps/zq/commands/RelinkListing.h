// What a relinking changes, or would change, use by use, and as JSON.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "apps/zq/SequenceView.h"
#include "host/json/Builder.h"

namespace zq {

struct SequenceUse {
    std::string sequence;
    SequencePiece piece;
    bool isCutShort = false; // it shows frames that the new file does not have
};

// Where the edit stands, and what the report says of each use. Thread: the session's.
[[nodiscard]] std::vector<SequenceUse> usesOf(Session& session, Cookie const& edit,
                                              engine::RelinkReport const& report);

// The new file, its differences from what the edit promises, and the uses: members without the braces.
void addRelinkMembers(JSON::Builder& json, engine::RelinkReport const& report,
                      std::span<SequenceUse const> uses);

} // namespace zq
