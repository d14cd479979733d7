// What a person means to buy: a list of clips for each repository, kept in the preferences.
#pragma once

#include <string>
#include <vector>

#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/RepositoryDesk.h"

namespace zq::panel {

class Baskets {
public:
    static constexpr std::size_t most = 1'000; // clips of one repository

    // The events outlive it.
    explicit Baskets(EventHub& events) : events_(events) {}

    // The clips of these ids, each once and at most `most`, are the basket from now on: the event "basket".
    // Thread: the desk's.
    void replace(RepositoryDesk const& desk, Session& session, std::vector<std::string> const& ids);
    // The basket as JSON. Thread: the desk's.
    [[nodiscard]] std::string json(RepositoryDesk const& desk, Session& session) const;

private:
    EventHub& events_;
};

} // namespace zq::panel
