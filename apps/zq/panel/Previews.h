// Previews of clips as content that a browser reads by ranges.
#pragma once

#include <atomic>
#include <memory>
#include <string>

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
    // Opens the file of that virtual path through the host's file layer. Throws ApiError: notFound where
    // there is none, failed where its server does not give it, conflict when too many are open.
    [[nodiscard]] Preview open(WideString const& path);

private:
    std::shared_ptr<std::atomic<int>> const open_ = std::make_shared<std::atomic<int>>(0);
};

} // namespace zq::panel
