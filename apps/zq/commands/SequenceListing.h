// Sequences as a table and as JSON.
#pragma once

#include <string>

#include "apps/zq/SequenceView.h"
#include "apps/zq/terminal/Screen.h"
#include "host/json/Builder.h"

namespace zq {

// The members of a piece, without its braces.
void addPieceMembers(JSON::Builder& json, SequencePiece const& piece);
void addSequenceMembers(JSON::Builder& json, SequenceView const& view);
[[nodiscard]] std::string sequenceTable(SequenceView const& view, Screen const& screen);

} // namespace zq
