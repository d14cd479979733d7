#include "apps/zq/Reason.h"

#include "apps/zq/ServiceWatch.h"

namespace zq {

namespace {

constexpr ReasonRow table[] = {
    {Reason::none, ""},
    {Reason::serviceUnreachable, "service_unreachable"},
    {Reason::serviceFailed, "service_failed"},
    {Reason::serviceRefused, "service_refused"},
    {Reason::notSignedIn, "not_signed_in"},
    {Reason::sellsNothing, "sells_nothing"},
    {Reason::notOwned, "not_owned"},
    {Reason::unknownClip, "unknown_clip"},
    {Reason::beingBought, "being_bought"},
    {Reason::alreadyBought, "already_bought"},
    {Reason::orderUnwritten, "order_unwritten"},
    {Reason::inDoubt, "in_doubt"},
    {Reason::beingFetched, "being_fetched"},
    {Reason::superseded, "superseded"},
    {Reason::cancelled, "cancelled"},
    {Reason::optionInactive, "option_inactive"},
    {Reason::readOnly, "read_only"},
    {Reason::noEdit, "no_edit"},
    {Reason::noSequence, "no_sequence"},
    {Reason::noPiece, "no_piece"},
    {Reason::notPlaceable, "not_placeable"},
    {Reason::nothingToUndo, "nothing_to_undo"},
    {Reason::nothingToRedo, "nothing_to_redo"},
    {Reason::unknownTask, "unknown_task"},
    {Reason::taskRuns, "task_runs"},
    {Reason::taskEnded, "task_ended"},
    {Reason::allFetched, "all_fetched"},
    {Reason::noPicture, "no_picture"},
    {Reason::noPreview, "no_preview"},
    {Reason::noMedia, "no_media"},
    {Reason::tooManyPreviews, "too_many_previews"},
    {Reason::unknownLink, "unknown_link"},
    {Reason::noBrowser, "no_browser"},
    {Reason::noPath, "no_path"},
    {Reason::noFolder, "no_folder"},
    {Reason::noAddress, "no_address"},
    {Reason::outOfRange, "out_of_range"},
    {Reason::unusableValue, "unusable_value"},
    {Reason::settingsFile, "settings_file"},
};

} // namespace

std::span<ReasonRow const> reasonTable() {
    return table;
}

std::string_view wordOf(Reason reason) {
    return table[static_cast<std::size_t>(reason)].word;
}

Reason reasonOf(ServiceWatch const& watch) {
    switch (watch.fate()) {
    case ServiceWatch::Fate::notSent:
        return Reason::serviceUnreachable;
    case ServiceWatch::Fate::refused:
        return Reason::serviceRefused;
    case ServiceWatch::Fate::lost:
    case ServiceWatch::Fate::ended:
    case ServiceWatch::Fate::answered:
        break;
    }
    return Reason::serviceFailed;
}

} // namespace zq
