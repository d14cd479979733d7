// "play": decodes a clip's preview as it streams, and tells what that took.

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/terminal/PlainText.h"
#include "host/engine/media/MediaReader.h"
#include "host/engine/pictures/PictureDecoder.h"
#include "host/engine/streaming/StreamingFiles.h"
#include "host/files/iFileManager.h"
#include "host/os/OS.h"

namespace zq {

namespace {

using Clock = std::chrono::steady_clock;

struct Played {
    std::string id;
    WideString path;
    engine::MediaFacts facts;
    std::int64_t frames = 0;
    double position_s = 0;
    double firstFrame_s = 0;
    engine::StreamingStatistics cost;
    std::string frameFile;
};

std::string decimal(double value, int places) {
    char text[64];
    int const length = std::snprintf(text, sizeof text, "%.*f", places, value);
    return {text, static_cast<std::size_t>(length)};
}

double framesPerSecond(engine::MediaFacts const& facts) {
    return facts.rateDenominator > 0 ? static_cast<double>(facts.rateNumerator) / facts.rateDenominator : 0;
}

std::string rateText(engine::MediaFacts const& facts) {
    std::string const known = utf8(Zq::getDisplayString(facts.rate));
    return known.empty() ? decimal(framesPerSecond(facts), 3) : known;
}

engine::StreamingStatistics difference(engine::StreamingStatistics const& now,
                                       engine::StreamingStatistics const& before) {
    engine::StreamingStatistics cost;
    cost.opens = now.opens - before.opens;
    cost.requests = now.requests - before.requests;
    cost.bytesReceived = now.bytesReceived - before.bytesReceived;
    cost.bytesRead = now.bytesRead - before.bytesRead;
    cost.bytesFromStore = now.bytesFromStore - before.bytesFromStore;
    return cost;
}

std::string describe(Played const& played) {
    engine::MediaFacts const& facts = played.facts;
    std::string text =
        plainText("preview of clip " + played.id + ": " + facts.videoCodec + ", " +
                  std::to_string(facts.width) + " x " + std::to_string(facts.height) + ", " +
                  rateText(facts) + " frames a second, " + std::to_string(facts.size_bytes) + " bytes") +
        "\n";
    text += "first frame, at " + decimal(played.position_s, 3) + " s, after " +
            decimal(played.firstFrame_s, 3) + " s; frames decoded: " + std::to_string(played.frames) + "\n";
    text += "requests: " + std::to_string(played.cost.requests) +
            "; bytes read: " + std::to_string(played.cost.bytesRead) +
            ", received: " + std::to_string(played.cost.bytesReceived) + "\n";
    if (!played.frameFile.empty()) {
        text += "written: " + plainText(played.frameFile) + "\n";
    }
    return text;
}

void addMembers(JSON::Builder& json, Played const& played) {
    addText(json, "id", played.id);
    json.add("path", played.path, true);
    addNumber(json, "size", played.facts.size_bytes);
    addText(json, "codec", played.facts.videoCodec);
    addNumber(json, "width", played.facts.width);
    addNumber(json, "height", played.facts.height);
    addDecimal(json, "rate", framesPerSecond(played.facts));
    addNumber(json, "frames", played.frames);
    addDecimal(json, "position", played.position_s);
    addDecimal(json, "firstFrameSeconds", played.firstFrame_s);
    addNumber(json, "requests", played.cost.requests);
    addNumber(json, "bytesRead", played.cost.bytesRead);
    addNumber(json, "bytesReceived", played.cost.bytesReceived);
    if (!played.frameFile.empty()) {
        addText(json, "frame", played.frameFile);
    }
}

class Play final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("ID", id_, "number of the clip, as search shows it")->required();
        addSeconds(options, "--at", at_s_, "time of the first frame, in seconds from the beginning");
        addSeconds(options, "--seconds", seconds_s_, "decode that much from there on; else one frame");
        options.add_option("--frame", frameFile_, "write the first frame to this PNG file")
            ->type_name("FILE");
    }

    Reply run(Session& session) override {
        RemoteAsset const asset = session.knownAsset(id_);
        if (asset.proxyLocation.isEmpty()) {
            throw CommandError("clip " + id_ + " has no preview");
        }
        engine::StreamingStatistics const before = session.engine().streams().statistics();
        Played played;
        played.id = id_;
        played.path = asset.proxyLocation;
        play(session, played);
        played.cost = difference(session.engine().streams().statistics(), before);
        Reply reply;
        reply.text = describe(played);
        reply.members = [played](JSON::Builder& json) { addMembers(json, played); };
        return reply;
    }

private:
    static void addSeconds(CLI::App& options, char const* name, double& value, char const* help) {
        CLI::Validator const isTime(
            [](std::string const& text) {
                double time_s = 0;
                bool const isNumber = CLI::detail::lexical_cast(text, time_s);
                return isNumber && time_s >= 0 ? std::string() : "not a time of 0 seconds or more: " + text;
            },
            "");
        options.add_option(name, value, help)->check(isTime)->type_name("SECONDS");
    }

    void play(Session& session, Played& played) const {
        ServiceWatch const watch = session.watch();
        Clock::time_point const begin = Clock::now();
        auto const reader = open(played.path, watch);
        engine::Result<engine::MediaFrame> const first = reader->seek(at_s_);
        if (!first) {
            fail(first.error(), watch);
        }
        played.firstFrame_s = std::chrono::duration<double>(Clock::now() - begin).count();
        played.position_s = first->position_s();
        played.frames = 1;
        engine::Result<engine::MediaFacts> const facts = reader->facts();
        if (!facts) {
            fail(facts.error(), watch);
        }
        played.facts = *facts;
        if (facts->duration_s > 0 && at_s_ >= facts->duration_s) {
            throw CommandError("the preview of clip " + id_ + " ends at " + decimal(facts->duration_s, 3) +
                               " s");
        }
        if (!frameFile_.empty()) {
            write(*first);
            played.frameFile = frameFile_;
        }
        goOn(session, *reader, played, watch);
    }

    [[nodiscard]] std::unique_ptr<engine::MediaReader> open(WideString const& path,
                                                            ServiceWatch const& watch) const {
        Zq::Ptr<iFile> const file = OS().fileManager().openForRead(path);
        if (!file) {
            fail("there is no such file, or its address cannot be used", watch);
        }
        if (file->getSize() == 0) {
            // The size alone does not tell a file that is not there from a server that is not.
            char byte = 0;
            fail(file->read(&byte, sizeof byte) < 0 ? "its server cannot be reached or refuses"
                                                    : "the server has no such file",
                 watch);
        }
        engine::Result<std::unique_ptr<engine::MediaReader>> opened = engine::MediaReader::open(file);
        if (!opened) {
            fail(opened.error(), watch);
        }
        return std::move(*opened);
    }

    // Decodes what was asked for behind the first frame.
    void goOn(Session& session, engine::MediaReader& reader, Played& played,
              ServiceWatch const& watch) const {
        double const end_s = played.position_s + seconds_s_;
        double now_s = played.position_s;
        double const length_s = 1 / std::max(framesPerSecond(played.facts), 1.0);
        while (now_s + length_s < end_s - length_s / 2) {
            engine::Result<std::optional<engine::MediaFrame>> const next = reader.next();
            if (!next) {
                fail(next.error(), watch);
            }
            if (!*next) {
                break;
            }
            now_s = (*next)->position_s();
            ++played.frames;
            session.live().showProgress("clip " + id_, (now_s - played.position_s) / seconds_s_);
        }
    }

    void write(engine::MediaFrame const& frame) const {
        Zq::Ptr<iHostImage> const image = frame.toImage();
        if (!image) {
            throw CommandError("the frame cannot be made a picture");
        }
        if (!engine::writePNG(*image, frameFile_)) {
            throw CommandError("cannot write " + frameFile_);
        }
    }

    [[noreturn]] void fail(std::string const& reason, ServiceWatch const& watch) const {
        std::optional<std::string> const failure = watch.failure();
        throw CommandError("the preview of clip " + id_ + " cannot be played: " + reason +
                           (failure ? " (" + *failure + ")" : std::string()));
    }

    std::string id_;
    double at_s_ = 0;
    double seconds_s_ = 0;
    std::string frameFile_;
};

} // namespace

std::unique_ptr<Command> makePlay() {
    return std::make_unique<Play>();
}

} // namespace zq
