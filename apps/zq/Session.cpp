#include "apps/zq/Session.h"

#include <utility>

#include "apps/zq/Reply.h"
#include "apps/zq/Text.h"

namespace zq {

namespace {

// The repository's answer when it is connected.
constexpr std::int32_t connectedStatus = 0;

} // namespace

Session::Session(Surroundings surroundings) : surroundings_(std::move(surroundings)) {}

iMediaFileRepository& Session::repository() const {
    if (surroundings_.repository == nullptr) {
        throw CommandError("no repository is loaded: \"zq info\" lists the modules");
    }
    return *surroundings_.repository;
}

MediaFileRepositoryBase& Session::base() const {
    auto* const base = dynamic_cast<MediaFileRepositoryBase*>(&repository());
    if (base == nullptr) {
        throw CommandError("this repository does not tell where its files lie");
    }
    return *base;
}

iMediaFileRepository& Session::connected() const {
    iMediaFileRepository& chosen = repository();
    if (!chosen.isConnected()) {
        HTTPConnectionInfo const connection = chosen.getDescription().connection;
        std::int32_t const status = chosen.connect(connection, LoggerHandle());
        if (status != connectedStatus) {
            throw CommandError("no connection can be made to \"" + utf8(connection.server) + "\" (status " +
                               std::to_string(status) + ")");
        }
    }
    return chosen;
}

SearchResults Session::search(SearchQuery const& query) {
    iMediaFileRepository& chosen = connected();
    ServiceWatch const serviceWatch = watch();
    SearchResults results = chosen.search(query);
    if (results.assets.empty() && results.totalCount == 0) {
        if (auto const failure = serviceWatch.failure()) {
            throw CommandError(*failure);
        }
        if (!serviceWatch.sawRequest()) {
            throw CommandError("the search could not be sent");
        }
    }
    if (results.assets.empty() && results.totalCount != 0 && query.page == SearchQuery{}.page) {
        throw CommandError("the service's answer cannot be used: it counts clips and holds none");
    }
    for (RemoteAsset const& asset : results.assets) {
        remember(asset);
    }
    return results;
}

void Session::remember(RemoteAsset const& asset) {
    if (assets_.insert_or_assign(asset.id, asset).second) {
        order_.push_back(asset.id);
    }
    if (order_.size() > mostAssets) {
        assets_.erase(order_.front());
        order_.pop_front();
    }
}

RemoteAsset Session::findAsset(std::string const& id) {
    WideString const wanted = wide(id);
    auto found = assets_.find(wanted);
    if (found == assets_.end()) {
        SearchQuery query;
        query.words = wanted;
        static_cast<void>(search(query));
        found = assets_.find(wanted);
    }
    if (found == assets_.end()) {
        // The search has told the repository where the service keeps its files, and they go by the id.
        RemoteAsset unseen;
        unseen.id = wanted;
        return unseen;
    }
    return found->second;
}

} // namespace zq
