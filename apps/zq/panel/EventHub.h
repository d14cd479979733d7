// Events for all pages that listen, in one order, with the last ones kept for a page that was away.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "apps/zq/panel/Http.h"

namespace zq::panel {

// Thread: any.
class EventHub {
public:
    static constexpr std::size_t kept = 1000;
    static constexpr std::size_t mostStreams = 64;

    EventHub();
    ~EventHub();
    EventHub(EventHub const&) = delete;
    EventHub& operator=(EventHub const&) = delete;

    // `data` is JSON on one line. Never waits for a page.
    void send(std::string_view event, std::string data);
    // The number of the last event.
    [[nodiscard]] std::uint64_t last() const;
    // The events behind that number as a stream of server-sent events, with "reset" in front where some of
    // them are not kept any more or the number is of another run; 0 begins with what comes next. Where there
    // are as many streams as may be, the one that has listened the longest ends; its page connects again.
    [[nodiscard]] std::shared_ptr<LiveText> listen(std::uint64_t behind);
    // True while somebody has a stream.
    [[nodiscard]] bool isHeard() const;
    // Ends all streams, and those that come.
    void end();

private:
    class Implementation;
    std::shared_ptr<Implementation> const implementation_; // shared with the streams
};

} // namespace zq::panel
