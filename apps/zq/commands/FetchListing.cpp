#include "apps/zq/commands/FetchListing.h"

#include "apps/zq/JsonOutput.h"

namespace zq {

namespace {

char const* wordFor(UnfetchedClip::Why why) {
    switch (why) {
    case UnfetchedClip::Why::cancelled:
        return "cancelled";
    case UnfetchedClip::Why::refused:
        return "refused";
    case UnfetchedClip::Why::media:
        return "media";
    case UnfetchedClip::Why::preview:
        return "preview";
    case UnfetchedClip::Why::transfer:
        break;
    }
    return "transfer";
}

} // namespace

void addUnfetched(JSON::Builder& json, char const* key, std::span<UnfetchedClip const> clips) {
    json.startArray(key);
    for (UnfetchedClip const& clip : clips) {
        json.startChild(nullptr);
        addText(json, "id", clip.id);
        addText(json, "name", clip.name);
        addText(json, "reason", clip.reason);
        addText(json, "why", wordFor(clip.why));
        json.endChild();
    }
    json.endArray();
}

} // namespace zq
