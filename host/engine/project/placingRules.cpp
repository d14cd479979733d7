#include "host/engine/project/placingRules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "host/engine/project/frameCounts.h"
#include "host/text/Unicode.h"
#include "host/text/oneLine.h"

namespace engine {

namespace {

constexpr std::uint32_t longestName = 200; // UTF-16 code units

std::string seconds(double time_s) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.6g s", time_s);
    return text.data();
}

} // namespace

Result<Piece> pieceBetween(EditRecord const& clip, std::optional<double> in_s, std::optional<double> out_s) {
    if (Zq::getFramesPerSecond(clip.rate) <= 0) {
        return Failure{"the frame rate of the clip is unknown: it cannot be placed by frames"};
    }
    std::int64_t const length = clip.durationInFrames();
    if (length == 0) {
        return Failure{"the clip has no length"};
    }
    for (std::optional<double> const& time : {in_s, out_s}) {
        if (time && !std::isfinite(*time)) {
            return Failure{"the in and out points must be numbers of seconds"};
        }
    }
    if (in_s && out_s && *in_s >= *out_s) {
        return Failure{"the in point (" + seconds(*in_s) + ") does not lie before the out point (" +
                       seconds(*out_s) + ")"};
    }
    Piece const piece{in_s ? framesBefore(*in_s, clip.rate, length) : 0,
                      out_s ? framesReaching(*out_s, clip.rate, length) : length};
    if (piece.in >= length || piece.out <= 0) {
        return Failure{
            (piece.in >= length ? "the in point (" + seconds(*in_s) : "the out point (" + seconds(*out_s)) +
            ") lies outside the clip, which has " + seconds(clip.duration_s)};
    }
    if (piece.in >= piece.out) {
        return Failure{"the piece between the in and out points holds no frame"};
    }
    return piece;
}

Result<Piece> trimmed(Piece const& piece, EditRecord const& clip, std::optional<double> in_s,
                      std::optional<double> out_s) {
    if (!in_s && !out_s) {
        return Failure{"trimming needs an in point or an out point"};
    }
    Result<Piece> const between = pieceBetween(clip, in_s, out_s);
    if (!between) {
        return between;
    }
    Piece const left{in_s ? between->in : piece.in, out_s ? between->out : piece.out};
    if (left.in >= left.out) {
        return Failure{in_s ? "the in point (" + seconds(*in_s) + ") does not lie before the end of the piece"
                            : "the out point (" + seconds(*out_s) +
                                  ") does not lie behind the beginning of the piece"};
    }
    return left;
}

std::string problemOfIndex(std::int64_t index, std::int64_t size) {
    if (index >= 0 && index < size) {
        return {};
    }
    return size == 1 ? "the only position is 1" : "positions go from 1 to " + std::to_string(size);
}

std::string problemOfSequenceName(std::string const& name) {
    WideString const wide = fromUTF8(std::string_view(name));
    if (std::ranges::all_of(wide, [](wchar_t unit) { return unit == L' '; })) {
        return "a sequence needs a name";
    }
    if (wide.length() > longestName) {
        return "the name of the sequence is longer than " + std::to_string(longestName) + " characters";
    }
    if (std::ranges::any_of(wide, Zq::breaksLine)) {
        return "the name of a sequence cannot hold control characters or line breaks";
    }
    if (toUTF8(wide).view() != name) {
        return "the name of the sequence is not valid text";
    }
    return {};
}

} // namespace engine
