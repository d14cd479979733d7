#include "apps/zq/Session.h"

#include <utility>

#include "apps/zq/Reason.h"
#include "apps/zq/Reply.h"
#include "apps/zq/Text.h"
#include "host/tasks/BackgroundTaskQueueBase.h"

namespace zq {

namespace {

// The repository's answer when it is connected.
constexpr std::int32_t connectedStatus = 0;

// How far the whole catalogue is looked through for a clip that a search for its number does not find.
constexpr std::uint16_t pageSizeOfLook = 500;
constexpr std::uint16_t mostPagesOfLook = 10;

void stopIfCancelled() {
    if (BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling) {
        throw ReasonedError(Reason::cancelled, "interrupted");
    }
}

} // namespace

bool isClipNumber(std::string_view text) {
    return !text.empty() && text.size() <= 18 && text.find_first_not_of("0123456789") == std::string::npos;
}

void requireClipNumber(std::string const& word) {
    if (!isClipNumber(word)) {
        throw CommandError("\"" + word +
                           "\" is no clip's number: those have decimal digits only, 18 at most");
    }
}

Session::Session(Surroundings surroundings) : surroundings_(std::move(surroundings)) {}

iMediaFileRepository& Session::repository() const {
    if (surroundings_.repository == nullptr) {
        throw CommandError("no repository is loaded: \"zq info\" lists the modules");
    }
    return *surroundings_.repository;
}

WideString Session::shortName() const {
    return surroundings_.repository != nullptr ? surroundings_.repository->getShortName() : WideString();
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
            if (WideString const told = chosen.getStatusText(); !told.isEmpty()) {
                throw ReasonedError(Reason::serviceUnreachable, utf8(told));
            }
            throw ReasonedError(Reason::serviceUnreachable, "no connection can be made to \"" +
                                                                utf8(connection.server) + "\" (status " +
                                                                std::to_string(status) + ")");
        }
    }
    return chosen;
}

std::string Session::user() const {
    return utf8(repository().getDescription().connection.user);
}

std::optional<std::int64_t> Session::credits() const {
    return user().empty() ? std::nullopt : surroundings_.answers->heard().credits;
}

iMediaFileRepository& Session::signedIn() const {
    iMediaFileRepository& chosen = connected();
    if (needsSignIn() && user().empty()) {
        throw ReasonedError(Reason::notSignedIn,
                            "Sign in first: zq login NAME, in the same shell; for a command on its own, "
                            "zq --login NAME COMMAND");
    }
    return chosen;
}

engine::Project& Session::writableProject() const {
    engine::Project& project = engine().project();
    if (!project.canWrite()) {
        throw ReasonedError(Reason::readOnly,
                            "another zq works on this project: until that ends it can only be looked at");
    }
    return project;
}

LightweightVector<RemoteAsset> Session::ownedAssets() const {
    iMediaFileRepository& chosen = signedIn();
    ServiceWatch const serviceWatch = watch();
    LightweightVector<RemoteAsset> owned = chosen.getPurchasedAssets();
    if (owned.empty()) {
        if (auto const failure = serviceWatch.failure()) {
            throw ReasonedError(reasonOf(serviceWatch), *failure);
        }
    }
    return owned;
}

SearchResults Session::search(SearchQuery const& query) {
    iMediaFileRepository& chosen = connected();
    ServiceWatch const serviceWatch = watch();
    SearchResults results = chosen.search(query);
    if (results.assets.empty() && results.totalCount == 0) {
        if (auto const failure = serviceWatch.failure()) {
            throw ReasonedError(reasonOf(serviceWatch), *failure);
        }
        bool const hasServer = !chosen.getDescription().connection.server.isEmpty();
        if (hasServer && !serviceWatch.sawRequest()) {
            throw ReasonedError(Reason::serviceUnreachable, "the search could not be sent");
        }
    }
    if (results.assets.empty() && results.totalCount != 0 && query.page == SearchQuery{}.page) {
        throw ReasonedError(Reason::serviceFailed,
                            "the service's answer cannot be used: it counts clips and holds none");
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

RemoteAsset Session::knownAsset(std::string const& id) {
    requireClipNumber(id);
    WideString const wanted = wide(id);
    RemoteAsset const found = findAsset(id);
    if (assets_.contains(wanted)) {
        return found;
    }
    // A service may look for a number among its words alone.
    SearchQuery everything;
    everything.pageSize = pageSizeOfLook;
    for (everything.page = 1; everything.page <= mostPagesOfLook; ++everything.page) {
        stopIfCancelled();
        SearchResults const page = search(everything);
        if (auto const seen = assets_.find(wanted); seen != assets_.end()) {
            return seen->second;
        }
        if (everything.page >= page.pageCount) {
            break;
        }
    }
    throw ReasonedError(Reason::unknownClip, "the service has no clip " + id);
}

} // namespace zq
