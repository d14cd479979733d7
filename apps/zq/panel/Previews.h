// Films of clips as content that a browser reads by ranges: previews, and full media on this machine.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "apps/zq/Reason.h"
#include "apps/zq/panel/Http.h"
#include "host/text/LightweightString.h"

namespace zq::panel {

// Thread: any.
class Previews {
public:
    static constexpr int mostOpen = 48;

    struct Preview {
        std::shared_ptr<Content> content;
        std::string type; // media type, by the file's first bytes
    };
    // Told of each read of an open file: why its bytes do not come, in a word and a line for the log, or
    // Reason::none where they do. On the thread that reads.
    using Tell = std::function<void(Reason reason, std::string const& text)>;

    // Opens the file of that path through the host's file layer. Throws ApiError: notFound where there is
    // none, failed where its server does not give it, conflict when too many are open.
    //
    // A read is late while the service cannot be reached: it is tried again for as long as somebody reads,
    // with pauses of up to four seconds. So is one that the service fails behind others that succeeded, a few
    // times. So a film that plays goes on by itself.
    [[nodiscard]] Preview open(WideString const& path, Tell tell = {});

private:
    std::shared_ptr<std::atomic<int>> const open_ = std::make_shared<std::atomic<int>>(0);
};

} // namespace zq::panel
