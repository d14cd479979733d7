#include "ClipFile.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <system_error>

#include "host/text/Numbers.h"
#include "host/text/Unicode.h"

namespace {

namespace fs = std::filesystem;

// What one search looks at in all: a folder without an end costs seconds, not hours.
constexpr std::size_t mostEntries = 200'000;

constexpr std::wstring_view mediaExtensions[] = {L".avi", L".m2ts", L".m4v", L".mkv", L".mov", L".mp4",
                                                 L".mpg", L".mts",  L".mxf", L".ogv", L".ts",  L".webm"};
constexpr char const* pictureExtensions[] = {".jpg", ".jpeg", ".png"};

// The small letters of the scripts that have them, as far as a fixed distance tells. The C library's would
// depend on the locale, which is the host's.
wchar_t smallLetter(wchar_t unit) {
    struct Capitals {
        wchar_t first;
        wchar_t last;
        int distance;
    };
    static constexpr Capitals table[] = {
        {L'A', L'Z', 32},     // Latin
        {0x00c0, 0x00d6, 32}, // with accents
        {0x00d8, 0x00de, 32}, //
        {0x0391, 0x03a9, 32}, // Greek
        {0x0400, 0x040f, 80}, // Cyrillic
        {0x0410, 0x042f, 32}, //
    };
    for (Capitals const& capitals : table) {
        if (unit >= capitals.first && unit <= capitals.last) {
            return static_cast<wchar_t>(unit + capitals.distance);
        }
    }
    return unit;
}

std::wstring inSmallLetters(WideString const& text) {
    std::wstring small(text.view());
    std::ranges::transform(small, small.begin(), smallLetter);
    return small;
}

std::vector<std::wstring> wordsOf(WideString const& text) {
    std::vector<std::wstring> words;
    std::wstring const small = inSmallLetters(text);
    std::size_t end = 0;
    for (;;) {
        std::size_t const begin = small.find_first_not_of(L" \t\u00a0\u3000", end);
        if (begin == std::wstring::npos) {
            return words;
        }
        end = std::min(small.find_first_of(L" \t\u00a0\u3000", begin), small.size());
        words.push_back(small.substr(begin, end - begin));
    }
}

// FNV-1a: an id must be the same in the next run too, which no standard hash promises. Fifteen digits, so
// that two clips of a folder hardly ever share one.
WideString idOf(std::string_view pathBelowFolder) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (char const byte : pathBelowFolder) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    return Zq::WStringFromInteger(static_cast<std::int64_t>(hash % 1'000'000'000'000'000U));
}

bool isMedia(fs::directory_entry const& entry) {
    std::wstring const extension = inSmallLetters(wideText(entry.path().extension()));
    std::error_code error;
    return std::ranges::find(mediaExtensions, extension) != std::end(mediaExtensions) &&
           entry.is_regular_file(error);
}

// Names with a dot in front are hidden, as those that other systems leave beside each file. A name that is
// not UTF-8 has no wide text that leads back to it, so no host could open it.
bool isTellable(fs::path const& path) {
    return !path.filename().native().starts_with('.') && localPath(wideText(path)) == path;
}

// A link to a folder is none: it may lead back to where we are.
bool isFolder(fs::directory_entry const& entry) {
    std::error_code error;
    return entry.is_directory(error) && !entry.is_symlink(error);
}

// Calls `visit` with every entry of the folder and of those below it.
template <class Visit>
void forEachEntry(fs::path const& folder, Visit const& visit) {
    std::vector<fs::path> folders{folder};
    std::size_t entries = 0;
    while (!folders.empty()) {
        fs::path const place = std::move(folders.back());
        folders.pop_back();
        // An error, in any of the steps, ends this folder alone.
        std::error_code error;
        for (fs::directory_iterator entry(place, error), end; !error && entry != end;
             entry.increment(error)) {
            if (++entries > mostEntries) {
                return;
            }
            if (!isTellable(entry->path())) {
                continue;
            }
            if (isFolder(*entry)) {
                folders.push_back(entry->path());
            } else {
                visit(*entry);
            }
        }
    }
}

} // namespace

std::vector<ClipFile> findClips(fs::path const& folder, WideString const& text) {
    std::vector<std::wstring> const words = wordsOf(text);
    std::vector<ClipFile> clips;
    forEachEntry(folder, [&](fs::directory_entry const& entry) {
        if (!isMedia(entry)) {
            return;
        }
        fs::path const below = entry.path().lexically_relative(folder);
        WideString const id = idOf(below.native());
        std::wstring const searched = inSmallLetters(wideText(below));
        auto const isIn = [&](std::wstring const& word) { return searched.find(word) != std::wstring::npos; };
        if (id == text || std::ranges::all_of(words, isIn)) {
            clips.push_back({entry.path(), id, wideText(below.stem())});
        }
    });
    std::ranges::sort(clips, {}, &ClipFile::path);
    return clips;
}

fs::path pictureBeside(fs::path const& clip) {
    if (clip.empty()) {
        return {};
    }
    for (char const* const extension : pictureExtensions) {
        fs::path picture = clip;
        picture.replace_extension(extension);
        std::error_code error;
        if (fs::is_regular_file(picture, error)) {
            return picture;
        }
    }
    return {};
}

WideString wideText(fs::path const& path) {
    return fromUTF8(std::string_view(path.native()));
}

fs::path localPath(WideString const& text) {
    return std::string(toUTF8(text).view());
}
