#include "apps/zq/SequenceView.h"

#include <map>

#include "apps/zq/EditLookup.h"
#include "apps/zq/Reply.h"

namespace zq {

namespace {

constexpr std::size_t mostNames = 10;

std::string unknownSequence(engine::Project& project, std::string const& name) {
    std::vector<std::string> const names = project.sequenceNames();
    std::string list;
    for (std::size_t i = 0; i < names.size() && i < mostNames; ++i) {
        list += (i == 0 ? "\"" : ", \"") + names[i] + "\"";
    }
    return "there is no sequence \"" + name + "\"" +
           (names.empty() ? "; \"place\" makes one" : "; there is " + list);
}

} // namespace

SequencePiece pieceOf(engine::Sequence const& sequence, engine::Placement const& placement,
                      engine::EditRecord edit) {
    SequencePiece piece;
    piece.placement = placement;
    piece.edit = std::move(edit);
    piece.sourceIn = engine::timecode(placement.in, piece.edit.rate);
    piece.sourceOut = engine::timecode(placement.out, piece.edit.rate);
    piece.recordIn = engine::timecode(placement.start, sequence.rate);
    piece.recordOut = engine::timecode(placement.start + placement.length, sequence.rate);
    return piece;
}

SequencePiece viewPiece(Session& session, engine::Sequence const& sequence,
                        engine::Placement const& placement, engine::EditRecord edit) {
    SequencePiece piece = pieceOf(sequence, placement, std::move(edit));
    piece.clipId = clipIdOf(piece.edit, session.shortName());
    return piece;
}

SequencePiece viewPiece(Session& session, engine::Sequence const& sequence,
                        engine::Placement const& placement) {
    return viewPiece(session, sequence, placement,
                     session.engine().project().edit(placement.edit).value_or(engine::EditRecord()));
}

SequenceView viewSequence(Session& session, std::string const& name) {
    engine::Project& project = session.engine().project();
    std::optional<engine::Sequence> sequence = project.sequence(name);
    if (!sequence) {
        throw CommandError(unknownSequence(project, name));
    }
    SequenceView view;
    view.sequence = *std::move(sequence);
    std::map<Cookie, engine::EditRecord> edits = project.editsOf(view.sequence);
    for (engine::Placement const& placement : view.sequence.placements) {
        view.pieces.push_back(viewPiece(session, view.sequence, placement, edits[placement.edit]));
    }
    return view;
}

} // namespace zq
