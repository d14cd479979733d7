// "thumbnail": the picture of a clip as a file.

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/terminal/PlainText.h"
#include "host/engine/pictures/PictureDecoder.h"

namespace zq {

namespace {

std::string reason(ServiceWatch const& watch) {
    char const* const unheard = watch.sawRequest()
                                    ? "what came is no picture, or the cache folder is not writable"
                                    : "the repository knows no address of it";
    return watch.failure().value_or(unheard);
}

class Thumbnail final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("ID", id_, "number of the clip, as search shows it")->required();
        options.add_option("FILE", file_, "the PNG file to write; one that is there is replaced")->required();
    }

    Reply run(Session& session) override {
        RemoteAsset const asset = session.findAsset(id_);
        ServiceWatch const watch = session.watch();
        Zq::Ptr<iHostImage> const image = session.connected().getThumbnail(asset);
        if (!image) {
            throw CommandError("there is no picture of clip " + id_ + ": " + reason(watch));
        }
        if (!engine::writePNG(*image, file_)) {
            throw CommandError("cannot write " + file_);
        }
        Reply reply;
        std::uint32_t const width = image->getWidth();
        std::uint32_t const height = image->getHeight();
        reply.text = plainText(file_ + ": " + std::to_string(width) + " x " + std::to_string(height)) + "\n";
        reply.members = [width, height, file = file_](JSON::Builder& json) {
            addText(json, "file", file);
            addNumber(json, "width", width);
            addNumber(json, "height", height);
        };
        return reply;
    }

private:
    std::string id_;
    std::string file_;
};

} // namespace

std::unique_ptr<Command> makeThumbnail() {
    return std::make_unique<Thumbnail>();
}

} // namespace zq
