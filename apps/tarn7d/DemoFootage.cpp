#include "apps/tarn7d/DemoFootage.h"

#include <atomic>
#include <sstream>
#include <thread>
#include <vector>

#include "apps/tarn7d/ClipFormat.h"
#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/PrivateFile.h"
#include "apps/tarn7d/Process.h"
#include "apps/tarn7d/SideFile.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

constexpr int standardDefinitionWidth = 720;
// Hidden, so that the catalogue does not take a clip that is being made.
constexpr std::string_view temporaryPrefix = ".making-";

double rateOf(std::string_view rate) {
    std::size_t const slash = rate.find('/');
    std::int64_t numerator = 0;
    std::int64_t denominator = 1;
    bool const good = parseInteger(rate.substr(0, slash), numerator) &&
                      (slash == std::string_view::npos || parseInteger(rate.substr(slash + 1), denominator));
    return good ? static_cast<double>(numerator) / static_cast<double>(denominator) : 25.0;
}

void appendWords(std::vector<std::string>& arguments, std::string_view words) {
    std::istringstream stream{std::string(words)};
    for (std::string word; stream >> word;) {
        arguments.push_back(word);
    }
}

// The filter marks the pictures, "-top" the stream; the encoders read one or the other.
struct FieldWords {
    std::string_view filter;
    std::string_view encoding;
};

FieldWords fieldWords(DemoScan scan) {
    switch (scan) {
    case DemoScan::lowerFieldFirst:
        return {",setfield=bff", "-top 0"};
    case DemoScan::upperFieldFirst:
        return {",setfield=tff", "-top 1"};
    case DemoScan::progressive:
        break;
    }
    return {};
}

std::vector<std::string> makeArguments(DemoClip const& clip, fs::path const& target) {
    std::string graph =
        sceneGraph({clip.scene, clip.width, clip.height, std::string(clip.rate), clip.frames});
    if (!clip.colour.empty()) {
        graph += ',';
        graph += clip.colour;
    }
    graph += fieldWords(clip.scan).filter;
    if (clip.width == standardDefinitionWidth && clip.height < clip.width) {
        graph += ",setdar=4/3"; // pixels that are not square
    }
    std::vector<std::string> arguments{"ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i", graph};
    if (!clip.sound.empty()) {
        appendWords(arguments, "-f lavfi -i");
        arguments.emplace_back(clip.sound);
        bool const isMp4 = clip.file.ends_with(".mp4");
        bool const isProgramStream = clip.file.ends_with(".mpg");
        appendWords(arguments, isMp4 ? "-c:a aac" : isProgramStream ? "-c:a mp2" : "-c:a pcm_s16le");
        appendWords(arguments, "-ar 48000 -ac 2");
    }
    appendWords(arguments, clip.encoding);
    appendWords(arguments, fieldWords(clip.scan).encoding);
    if (!clip.file.ends_with(".mpg")) {
        appendWords(arguments, "-movflags +faststart");
    }
    // The pictures are counted; the time bounds the sound, whose source has no end.
    arguments.insert(arguments.end(), {"-frames:v", std::to_string(clip.frames), "-t",
                                       std::to_string(clip.frames / rateOf(clip.rate)), "-threads", "2",
                                       "file:" + target.string()});
    return arguments;
}

std::string tomlText(std::string_view text) {
    std::string quoted = "\"";
    for (char const c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + "\"";
}

std::string sideText(DemoClip const& clip) {
    std::string text = "title = " + tomlText(clip.title) + "\nkeywords = [";
    std::vector<std::string> words;
    appendWords(words, clip.keywords);
    for (std::string const& word : words) {
        text += (&word == &words.front() ? "" : ", ") + tomlText(word);
    }
    return text + "]\nprice = " + priceText(clip.price_cents) + "\n";
}

bool makeClip(fs::path const& folder, DemoClip const& clip, std::stop_token const& stop) {
    fs::path const target = folder / clip.file;
    fs::path const temporary = folder / (std::string(temporaryPrefix) + std::string(clip.file));
    ProcessResult const result = runProcess(makeArguments(clip, temporary), stop);
    std::error_code error;
    if (result.exitStatus != 0) {
        if (!result.stopped) {
            logLine("cannot make the demonstration clip " + std::string(clip.file) + ": " + result.errors);
        }
        fs::remove(temporary, error);
        return false;
    }
    // The side file first: the clip is complete from the moment it can be seen.
    writeFileAtomically(sideFileOf(target), sideText(clip), 0644);
    fs::rename(temporary, target);
    return true;
}

} // namespace

DemoResult makeDemoFootage(fs::path const& folder, std::stop_token const& stop,
                           std::span<DemoClip const> clips) {
    std::vector<DemoClip const*> missing;
    for (DemoClip const& clip : clips) {
        std::error_code error;
        if (!fs::exists(folder / clip.file, error)) {
            missing.push_back(&clip);
        }
    }
    if (missing.empty()) {
        return DemoResult::complete;
    }
    logLine("making " + std::to_string(missing.size()) + " demonstration clips in " + folder.string());
    std::atomic<std::size_t> next = 0;
    std::atomic<std::size_t> done = 0;
    std::atomic<bool> failed = false;
    auto const work = [&] {
        for (std::size_t i = next++; i < missing.size() && !stop.stop_requested(); i = next++) {
            try {
                if (makeClip(folder, *missing[i], stop)) {
                    logLine("demonstration clip " + std::to_string(++done) + " of " +
                            std::to_string(missing.size()) + ": " + std::string(missing[i]->file));
                } else {
                    failed = true;
                }
            } catch (std::exception const& error) {
                logLine(std::string("cannot store a demonstration clip: ") + error.what());
                failed = true;
            }
        }
    };
    {
        std::jthread const second(work);
        work();
    }
    return stop.stop_requested() ? DemoResult::stopped : failed ? DemoResult::failed : DemoResult::complete;
}

} // namespace tarn7d
