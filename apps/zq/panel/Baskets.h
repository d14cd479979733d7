// What a person means to buy: a list of clips for each repository, kept from run to run.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/PanelMemory.h"
#include "apps/zq/panel/RepositoryDesk.h"

namespace zq::panel {

class Baskets {
public:
    static constexpr std::size_t most = 1'000; // clips of one repository

    // Both outlive it.
    Baskets(EventHub& events, PanelMemory& memory) : events_(events), memory_(memory) {}

    // The clips of these ids, each once and at most `most`, are the basket from now on: the event "basket".
    // Thread: the desk's.
    void replace(RepositoryDesk const& desk, Session& session, std::vector<std::string> const& ids);
    // These have been bought and leave the basket: the event "basket" where one was in it. Thread: the
    // desk's.
    void remove(RepositoryDesk const& desk, std::vector<std::string> const& ids);
    // The basket as JSON; those that are undecided are in purchases whose end is open, and not to be bought
    // now. Thread: the desk's.
    [[nodiscard]] std::string json(RepositoryDesk const& desk, Session& session,
                                   std::set<std::string> const& undecided) const;

private:
    void keep(RepositoryDesk const& desk, std::vector<BasketClip> const& clips);

    EventHub& events_;
    PanelMemory& memory_;
};

} // namespace zq::panel
