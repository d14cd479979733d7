#include "host/engine/interchange/Export.h"

#include <exception>
#include <set>

#include <pugixml.hpp>

#include "host/engine/interchange/formats.h"

namespace engine {

namespace {

struct NamedFormat {
    std::string_view name;
    ExportFormat format;
};
constexpr NamedFormat formats[] = {
    {"mlt", ExportFormat::mlt},
    {"edl", ExportFormat::edl},
    {"fcpxml", ExportFormat::fcpxml},
    {"otio", ExportFormat::otio},
};

std::string write(ExportSequence const& sequence, ExportFormat format, std::vector<ExportWarning>& warnings) {
    switch (format) {
    case ExportFormat::mlt:
        return interchange::writeMlt(sequence);
    case ExportFormat::edl:
        return interchange::writeEdl(sequence, warnings);
    case ExportFormat::fcpxml:
        return interchange::writeFcpxml(sequence);
    case ExportFormat::otio:
        break;
    }
    return interchange::writeOtio(sequence);
}

} // namespace

std::optional<ExportFormat> exportFormatFromName(std::string_view name) {
    for (NamedFormat const& known : formats) {
        if (known.name == name) {
            return known.format;
        }
    }
    return std::nullopt;
}

Result<Exported> exportSequence(ExportSequence const& sequence, ExportFormat format) {
    if (sequence.clips.empty()) {
        return Failure{"the sequence \"" + sequence.name + "\" has no clips"};
    }
    Exported exported;
    std::set<std::string> previews;
    for (ExportClip const& clip : sequence.clips) {
        if (clip.isPreview() && previews.insert(clip.kind + " " + clip.id + " " + clip.name).second) {
            exported.warnings.push_back({ExportWarning::Kind::preview, clip.name,
                                         "\"" + clip.name + "\" (" + clip.kind + " " + clip.id +
                                             ") is still a preview and is not licensed"});
        }
    }
    exported.text = write(sequence, format, exported.warnings);
    return exported;
}

namespace interchange {

namespace {

class Text final : public pugi::xml_writer {
public:
    void write(void const* bytes, std::size_t size) override {
        text.append(static_cast<char const*>(bytes), size);
    }
    std::string text;
};

} // namespace

std::int64_t convertFrames(std::int64_t frames, Zq::FrameRate from, Zq::FrameRate to) noexcept {
    Zq::ExactRate const source = Zq::getExactRate(from);
    Zq::ExactRate const target = Zq::getExactRate(to);
    if (from == to || source.numerator == 0 || target.numerator == 0) {
        return frames;
    }
    return frames * source.denominator * target.numerator /
           (static_cast<std::int64_t>(source.numerator) * target.denominator);
}

bool countsInDropFrame(Zq::FrameRate rate) noexcept {
    return rate == Zq::FrameRate::f29_97 || rate == Zq::FrameRate::f59_94;
}

std::int64_t programmeStart(Zq::FrameRate rate) noexcept {
    Zq::ExactRate const exact = Zq::getExactRate(rate);
    std::int64_t const counted = (exact.numerator + exact.denominator - 1) / exact.denominator;
    // In an hour drop frame leaves out two numbers, or four at the double rate, in 54 of 60 minutes.
    std::int64_t const dropped = countsInDropFrame(rate) ? 54 * counted / 15 : 0;
    return 3600 * counted - dropped;
}

std::string licenceState(ExportClip const& clip) {
    return clip.isPreview() ? "preview, not licensed" : "owned";
}

std::string fileUrl(std::string const& path) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    static constexpr std::string_view kept =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string url = "file://";
    for (char const character : path) {
        if (kept.find(character) != std::string_view::npos) {
            url += character;
            continue;
        }
        auto const byte = static_cast<unsigned char>(character);
        url += '%';
        url += digits[byte >> 4];
        url += digits[byte & 15];
    }
    return url;
}

std::string xmlText(pugi::xml_document const& document) {
    Text writer;
    document.save(writer, "  ", pugi::format_default, pugi::encoding_utf8);
    return std::move(writer.text);
}

} // namespace interchange

} // namespace engine
