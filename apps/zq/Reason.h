// Why something failed, as a word for a program that has texts of its own. The text of a failure is for logs
// and for a person at a terminal.
#pragma once

#include <span>
#include <string_view>

#include "apps/zq/Reply.h"

namespace zq {

class ServiceWatch;

enum class Reason {
    none, // the text alone tells

    serviceUnreachable, // no byte has left this machine
    serviceFailed,      // its answer did not come whole, has an error status, or cannot be understood
    serviceRefused,     // it says no
    notSignedIn,
    sellsNothing,
    notOwned,
    unknownClip,
    beingBought,
    alreadyBought,
    orderUnwritten,
    inDoubt,
    beingFetched,
    superseded,
    cancelled,
    optionInactive,

    readOnly, // another program works on the project
    noEdit,
    noSequence,
    noPiece,
    notPlaceable, // the times or the place cannot be
    nothingToUndo,
    nothingToRedo,

    unknownTask,
    taskRuns,
    taskEnded,
    allFetched,

    noPicture,
    noPreview,
    noMedia, // not on this machine
    tooManyPreviews,

    unknownLink,
    noBrowser,

    noPath,
    noFolder,
    noAddress,
    outOfRange,
    unusableValue,
    settingsFile, // it cannot be read, understood or written
};

struct ReasonRow {
    Reason reason;
    std::string_view word; // empty of `none`
};

// All reasons, each once, in their order.
[[nodiscard]] std::span<ReasonRow const> reasonTable();
[[nodiscard]] std::string_view wordOf(Reason reason);

// What became of the requests that were watched: one of the three of a service.
[[nodiscard]] Reason reasonOf(ServiceWatch const& watch);

// A failure of a command with its reason.
class ReasonedError : public CommandError {
public:
    ReasonedError(Reason reason, std::string const& text) : CommandError(text), reason_(reason) {}
    [[nodiscard]] Reason reason() const noexcept { return reason_; }

private:
    Reason reason_;
};

} // namespace zq
