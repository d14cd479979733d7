#include "apps/zq/exportFile.h"

#include "apps/zq/Reply.h"
#include "apps/zq/SequenceView.h"
#include "host/engine/files/WholeFile.h"

namespace zq {

std::vector<std::string> exportFile(Session& session, std::string const& sequence,
                                    engine::ExportFormat format, std::filesystem::path const& file) {
    static_cast<void>(
        viewSequence(session, sequence)); // tells what there is, where there is none of the name
    std::optional<engine::ExportSequence> const gathered =
        engine::gatherSequence(session.engine().project(), sequence);
    if (!gathered) {
        throw CommandError("the sequence \"" + sequence + "\" cannot be read");
    }
    engine::Result<engine::Exported> const exported = engine::exportSequence(*gathered, format);
    if (!exported) {
        throw CommandError(exported.error());
    }
    if (!engine::writeWholeFile(file, exported->text, engine::Durability::synced)) {
        throw CommandError("cannot write " + file.string());
    }
    std::vector<std::string> warnings;
    for (engine::ExportWarning const& warning : exported->warnings) {
        warnings.push_back(warning.text);
    }
    return warnings;
}

} // namespace zq
