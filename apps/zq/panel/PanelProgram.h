// A running panel: all repositories of the loaded modules, a desk each, and the transport before them.
#pragma once

#include <memory>
#include <string>

#include "apps/zq/Session.h"

namespace zq::panel {

// Thread: the main thread.
class PanelProgram {
public:
    // Serves on that port of 127.0.0.1, or with 0 on a free one: the one of earlier runs where it can be had,
    // since browsers keep what a page remembers by its port. The session outlives it, and makes no call
    // to a repository while it is there. Repositories are connected when they are first asked for something.
    // Throws CommandError where the port is taken.
    PanelProgram(Session& session, int port);
    // Ends the connections, the tasks, the purchases that are watched, and the desks.
    ~PanelProgram();
    PanelProgram(PanelProgram const&) = delete;
    PanelProgram& operator=(PanelProgram const&) = delete;

    // What a person opens to enter; it holds the token.
    [[nodiscard]] std::string address() const;

    // Has the machine's browser show the panel. What the browser is told is a file of the home folder; it
    // goes when the browser has entered, which removeUsedPage looks at, and at the end. What fails goes to
    // the log.
    void openInBrowser();
    void removeUsedPage();

private:
    class Implementation;
    std::unique_ptr<Implementation> const implementation_;
};

} // namespace zq::panel
