#include "apps/zq/commands/SequenceListing.h"

#include "apps/zq/JsonOutput.h"
#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/Table.h"

namespace zq {

void addPieceMembers(JSON::Builder& json, SequencePiece const& piece) {
    addNumber(json, "number", piece.placement.number);
    addText(json, "edit", engine::cookieText(piece.placement.edit));
    addText(json, "clip", piece.clipId);
    json.add("name", piece.edit.name(), true);
    addNumber(json, "in", piece.placement.in);
    addNumber(json, "out", piece.placement.out);
    addNumber(json, "start", piece.placement.start);
    addNumber(json, "length", piece.placement.length);
    addText(json, "sourceIn", piece.sourceIn);
    addText(json, "sourceOut", piece.sourceOut);
    addText(json, "recordIn", piece.recordIn);
    addText(json, "recordOut", piece.recordOut);
    json.add("preview", piece.edit.mediaLocation.isEmpty());
}

void addSequenceMembers(JSON::Builder& json, SequenceView const& view) {
    addText(json, "name", view.sequence.name);
    addNumber(json, "frameRate", static_cast<std::uint32_t>(view.sequence.rate));
    json.add("frameRateText", Zq::getDisplayString(view.sequence.rate), true);
    addNumber(json, "length", view.sequence.length());
    addText(json, "lengthTimecode", engine::timecode(view.sequence.length(), view.sequence.rate));
    json.startArray("placements");
    for (SequencePiece const& piece : view.pieces) {
        json.startChild(nullptr);
        addPieceMembers(json, piece);
        json.endChild();
    }
    json.endArray();
}

std::string sequenceTable(SequenceView const& view, Screen const& screen) {
    Table table({{"Piece", Table::Align::right},
                 {"Clip", Table::Align::right},
                 {"Name", Table::Align::left, true},
                 {"Source in", Table::Align::right},
                 {"Source out", Table::Align::right},
                 {"In", Table::Align::right},
                 {"Out", Table::Align::right},
                 {"Plays"}});
    for (SequencePiece const& piece : view.pieces) {
        table.addRow({std::to_string(piece.placement.number), piece.clipId, utf8(piece.edit.name()),
                      piece.sourceIn, piece.sourceOut, piece.recordIn, piece.recordOut,
                      piece.edit.mediaLocation.isEmpty() ? "preview" : "full file"});
    }
    std::string const rate = utf8(Zq::getDisplayString(view.sequence.rate));
    return table.render(screen) + plainText(view.sequence.name) + ": " +
           engine::timecode(view.sequence.length(), view.sequence.rate) + ", " +
           std::to_string(view.sequence.length()) + " frames" +
           (rate.empty() ? std::string() : " at " + rate + " frames a second") + "\n";
}

} // namespace zq
