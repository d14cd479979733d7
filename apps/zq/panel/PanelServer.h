// The panel's transport: HTTP on the loopback interface, the checks of each request, and the page's files.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/zq/panel/Route.h"
#include "apps/zq/panel/WebFiles.h"

namespace zq::panel {

class PanelServer {
public:
    // Answers these routes, and those of the page itself, on 127.0.0.1: on the first of the preferred ports
    // that is free, else on that port, or with 0 on a free one. Throws std::runtime_error with a text for the
    // user when the port is taken. Everything that a handler uses outlives the server.
    PanelServer(Routes routes, WebFiles files, int port, std::vector<int> const& preferred = {});
    // end()
    ~PanelServer();
    PanelServer(PanelServer const&) = delete;
    PanelServer& operator=(PanelServer const&) = delete;

    [[nodiscard]] int port() const noexcept;
    // What a person opens to enter. It holds the token: it goes to that person alone.
    [[nodiscard]] std::string address() const;
    // The same for a page that leads there, whose use is known afterwards.
    [[nodiscard]] std::string addressForPage() const;
    // True when somebody has entered by that one. Thread: any.
    [[nodiscard]] bool wasPageUsed() const noexcept;
    // All routes that are answered.
    [[nodiscard]] Routes const& routes() const noexcept;

    // Ends all connections, cancels what the handlers wait for as tasks, and returns when none runs any more.
    // Thread: any but those of the handlers; one at a time.
    void end();

private:
    class Implementation;
    std::unique_ptr<Implementation> const implementation_;
};

} // namespace zq::panel
