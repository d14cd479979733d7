#include "apps/zq/panel/PanelProgram.h"

#include <optional>
#include <stdexcept>
#include <vector>

#include "apps/zq/Reply.h"
#include "apps/zq/panel/Baskets.h"
#include "apps/zq/panel/EntryPage.h"
#include "apps/zq/panel/Fetches.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/PanelServer.h"
#include "apps/zq/panel/PanelSettings.h"
#include "apps/zq/panel/Purchases.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/engine/os/DesktopShell.h"
#include "host/engine/settings/HomeFolder.h"
#include "host/log/Log.h"

namespace zq::panel {

class PanelProgram::Implementation {
public:
    Implementation(Session& session, int port)
        : output_(session.screen()), live_(output_), memory_(session.engine().home() / "panel.toml"),
          baskets_(events_, memory_), orders_(session.engine().home() / "purchases.db"),
          desks_(desksOf(session)), purchases_(orders_, desks_, events_, links_, baskets_),
          fetches_(session.engine(), events_),
          settings_(session.engine(), events_, memory_), panel_{session.engine(), events_,    desks_,
                                                                baskets_,         purchases_, fetches_,
                                                                settings_,        links_},
          server_(allRoutes(panel_), WebFiles(findWebFolder(engine::findProgramFolder())), port,
                  port == 0 ? memory_.ports() : std::vector<int>()) {
        if (port == 0) {
            memory_.addPort(server_.port());
        }
    }

    // The pages first, so that nothing is asked for any more. A handler that waits for a desk goes on when
    // the desk ends, and the server when the last handler has.
    ~Implementation() {
        events_.end();
        for (std::unique_ptr<RepositoryDesk> const& desk : desks_) {
            desk->end();
        }
        server_.end();
    }
    Implementation(Implementation const&) = delete;
    Implementation& operator=(Implementation const&) = delete;

    [[nodiscard]] std::string address() const { return server_.address(); }

    void openInBrowser() {
        std::string const name = "panel-" + std::to_string(server_.port()) + ".html";
        try {
            page_.emplace(panel_.engine.home() / name, server_.addressForPage());
        } catch (CommandError const& failure) {
            Log("The panel was not opened in the browser: %s", failure.what());
            return;
        }
        static_cast<void>(panel_.engine.shell().openFileInBrowser(page_->file()));
    }
    void removeUsedPage() {
        if (server_.wasPageUsed()) {
            page_.reset();
        }
    }

private:
    [[nodiscard]] std::vector<std::unique_ptr<RepositoryDesk>> desksOf(Session& session) {
        // The operations of the program say what they do on a terminal: here pages are told.
        live_.begin(Output::Format::json);
        Session::Surroundings surroundings;
        surroundings.modules = session.modules();
        // What runs beside a desk, a picture or a preview, must not pass for a failure of its own.
        surroundings.statistics = [&network = session.engine().network()] {
            return network.statisticsOfThisThread();
        };
        surroundings.answers = &answers_;
        surroundings.input = &session.input();
        surroundings.live = &live_;
        surroundings.engine = &session.engine();
        surroundings.isShell = true;
        surroundings.screen = session.screen();
        std::vector<std::unique_ptr<RepositoryDesk>> desks;
        for (engine::ModuleReport const& module : session.modules()) {
            for (iMediaFileRepository* const repository : module.repositories) {
                surroundings.repository = repository;
                desks.push_back(std::make_unique<RepositoryDesk>(surroundings, events_, links_, memory_));
            }
        }
        return desks;
    }

    Output output_;
    LiveOutput live_;
    AnswerWatch answers_;
    EventHub events_;
    GivenLinks links_;
    PanelMemory memory_;
    Baskets baskets_;
    OrderBook orders_;
    std::vector<std::unique_ptr<RepositoryDesk>> desks_;
    Purchases purchases_;
    Fetches fetches_;
    PanelSettings settings_;
    Panel const panel_;
    PanelServer server_;
    std::optional<EntryPage> page_;
};

PanelProgram::PanelProgram(Session& session, int port) try
    : implementation_(std::make_unique<Implementation>(session, port)) {
} catch (CommandError const&) {
    throw;
} catch (std::runtime_error const& error) {
    throw CommandError(error.what());
}

PanelProgram::~PanelProgram() = default;

std::string PanelProgram::address() const {
    return implementation_->address();
}

void PanelProgram::openInBrowser() {
    implementation_->openInBrowser();
}

void PanelProgram::removeUsedPage() {
    implementation_->removeUsedPage();
}

} // namespace zq::panel
