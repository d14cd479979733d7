// Exact frame rates: from what is known, from a figure that can be trusted, or from the service.

#include "host/text/Unicode.h"
#include "tarn7/Command.h"
#include "tarn7/ItemReader.h"

namespace {

std::uint32_t cacheKey(WideString const& id) {
    return static_cast<std::uint32_t>(Zq::IntFromWString(id, 0));
}

} // namespace

Zq::FrameRate Tarn7Resource::getTrustedFrameRate(Item const& item) {
    WideString const text = item.getWString("fps");
    if (text.isEmpty()) {
        return Zq::FrameRate::unknown;
    }
    // A coarse 24, 30 or 60 may stand for its 1001 sibling; these rates have none.
    Zq::FrameRate const rate = frameRateFromText(text);
    bool const trusted =
        rate == Zq::FrameRate::f25 || rate == Zq::FrameRate::f50 || rate == Zq::FrameRate::f100;
    return trusted ? rate : Zq::FrameRate::unknown;
}

// A rate of 0 that the cache holds stays for good: the request is repeated, its answer dropped. An entry is
// what the rest of the program has already shown, and edits were made with it.
void Tarn7Resource::getClipData(LightweightVector<RemoteAsset>& assets) {
    LightweightVector<Command> commands;
    for (RemoteAsset& asset : assets) {
        auto const known = clipCache.find(cacheKey(asset.id));
        if (known != clipCache.end()) {
            asset.frameRate = known->second.frameRate;
        } else {
            auto const* const item = dynamic_cast<Item const*>(asset.payload.get());
            asset.frameRate = item != nullptr ? getTrustedFrameRate(*item) : Zq::FrameRate::unknown;
        }
        if (asset.frameRate == Zq::FrameRate::unknown) {
            commands.emplace_back(L"get_clip_data").addParam("itemid", asset.id);
        }
    }
    if (commands.empty()) {
        return;
    }

    Response const response = sendCommands(commands);
    if (!responseFailed(response)) {
        for (std::size_t i = 0; i < commands.size() && i <= 0xffff; ++i) {
            Response const reply = commandReply(response, static_cast<std::uint16_t>(i));
            Response const clip = JSON::orEmpty(reply).getChild("clip_data");
            if (!clip) {
                continue;
            }
            Tarn7ClipData const data{frameRateFromText(clip->getWString("pim_aut_fps_real")),
                                     static_cast<double>(tarn7::milliseconds(*clip, "pim_aut_duration_ms")) /
                                         1000.0};
            clipCache.try_emplace(cacheKey(commands[i].getWString("itemid")), data);
        }
    }
    for (RemoteAsset& asset : assets) {
        if (asset.frameRate == Zq::FrameRate::unknown) {
            auto const found = clipCache.find(cacheKey(asset.id));
            if (found != clipCache.end()) {
                asset.frameRate = found->second.frameRate;
            }
        }
    }
}
