// What a person sets in the panel: the host's settings, which stand in host.toml, and how the page looks,
// which stands in the panel's memory.
#pragma once

#include <mutex>
#include <string>

#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/Http.h"
#include "apps/zq/panel/PanelMemory.h"
#include "host/engine/Engine.h"

namespace zq::panel {

// The event "settings" comes from here. Thread: any.
class PanelSettings {
public:
    // All outlive it.
    PanelSettings(engine::Engine& engine, EventHub& events, PanelMemory& memory)
        : engine_(engine), events_(events), memory_(memory) {}

    // The page's language: what was set last, from then on, and else the program's.
    [[nodiscard]] std::string language() const;
    // "dark", "light" or "system".
    [[nodiscard]] std::string theme() const;
    // The settings as JSON: those of host.toml as it is now, also where they hold after a restart only.
    [[nodiscard]] std::string json() const;
    // Changes what the body of the request gives, all of it or nothing. Throws ApiError: badRequest for a
    // value that cannot be, conflict where host.toml cannot be read or written.
    void change(Request const& request);
    // Removes what the cache holds and nobody has open; the number of bytes that are free now.
    [[nodiscard]] std::uint64_t clearCache();

private:
    engine::Engine& engine_;
    EventHub& events_;
    PanelMemory& memory_;
    std::mutex changing_;
};

} // namespace zq::panel
