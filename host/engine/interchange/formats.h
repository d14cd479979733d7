// The formats that Export.h names, one function and one source each, and the arithmetic that they share.
#pragma once

#include <string>

#include "host/engine/interchange/Export.h"

namespace pugi {
class xml_document;
}

namespace engine::interchange {

// The file of an MLT project: one playlist, which a player of that framework renders.
[[nodiscard]] std::string writeMlt(ExportSequence const& sequence);
// CMX 3600: events with a reel, source and record timecodes, and notes. Adds a warning for what it cannot
// say.
[[nodiscard]] std::string writeEdl(ExportSequence const& sequence, std::vector<ExportWarning>& warnings);
// FCPXML 1.9.
[[nodiscard]] std::string writeFcpxml(ExportSequence const& sequence);
// OpenTimelineIO's own JSON.
[[nodiscard]] std::string writeOtio(ExportSequence const& sequence);

// Frames of one rate as whole frames of another that have begun by then.
[[nodiscard]] std::int64_t convertFrames(std::int64_t frames, Zq::FrameRate from, Zq::FrameRate to) noexcept;
// Where the sequence's timecode begins: the frame of 01:00:00:00, as is usual for programmes.
[[nodiscard]] std::int64_t programmeStart(Zq::FrameRate rate) noexcept;
// What is called drop frame: the timecode leaves out numbers to keep up with the clock.
[[nodiscard]] bool countsInDropFrame(Zq::FrameRate rate) noexcept;
// "owned" or "preview, not licensed".
[[nodiscard]] std::string licenceState(ExportClip const& clip);
// The path as a file URL (RFC 8089), percent-encoded.
[[nodiscard]] std::string fileUrl(std::string const& path);
[[nodiscard]] std::string xmlText(pugi::xml_document const& document);

} // namespace engine::interchange
