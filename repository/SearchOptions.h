// Finding and setting the parameters that a repository offers for its search, for any screen.
#pragma once

#include "host/parameters/iParam.h"
#include "repository/SearchRecords.h"

enum class SearchOptionResult {
    set,
    noSuchGroup,
    noSuchOption, // the group has no parameter at that position
    inactive,     // the parameter has no meaning at the moment
    noSuchTag,    // no entry of the choice has that tag, or the text is no number
    notABoolean,  // neither true nor false
    refused,      // a constraint forbids the value, or the text is no value of the parameter
};

// The parameter at a position in a group, both counted from 0; null where there is none. By position, because
// ids repeat across groups. Thread: the repository's.
[[nodiscard]] ZQ_API Zq::Ptr<GenericParam::iParam>
findSearchOption(LightweightVector<SearchOptionGroup> const& groups, std::size_t group, std::size_t position);

// Sets it as a person would: a choice by the tag of the entry in decimal (-1 for the entry that filters
// nothing), a boolean by "true" or "false", any other by the text of its value. The change handlers have been
// called when this returns; they may replace or empty `groups`. Thread: the repository's.
[[nodiscard]] ZQ_API SearchOptionResult setSearchOption(LightweightVector<SearchOptionGroup> const& groups,
                                                        std::size_t group, std::size_t position,
                                                        WideString const& text);
