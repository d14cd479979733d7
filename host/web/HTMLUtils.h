// Rich text for the host's screens. Plain text that goes in is escaped; rich text is passed on as it is.
// Thread: any.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/text/LightweightString.h"

namespace HTMLUtils {

// "Take the screen's own": for either value of addParagraphTags.
inline constexpr std::uint32_t screenDefault = 4294967295U;

// A link as rich text. Text and URL are plain and are escaped.
[[nodiscard]] ZQ_API WideString makeLink(WideString const& text, WideString const& url);
// Rich text as a paragraph, with a width in pixels and a colour as 0xRRGGBB.
[[nodiscard]] ZQ_API WideString addParagraphTags(WideString const& text, std::uint32_t width,
                                                 std::uint32_t colour);
// Rich text in the look of a minor note.
[[nodiscard]] ZQ_API WideString incidentalText(WideString const& text);
// Plain text as rich text: the characters that mean something in markup, escaped.
[[nodiscard]] ZQ_API WideString escape(WideString const& text);

} // namespace HTMLUtils
