#include "host/engine/streaming/StreamingCore.h"

#include "host/engine/streaming/StreamSession.h"
#include "host/log/Log.h"

namespace engine {

namespace {

constexpr std::size_t mostLayouts = 10'000;

std::string keyOf(StreamSource const& source) {
    return source.cachePath.native() + '\n' + source.identity;
}

} // namespace

std::shared_ptr<StreamSession> StreamingCore::open(StreamSource source, StreamReader& reader) {
    ++counters.opens;
    if (source.cachePath.empty()) {
        auto const session = std::make_shared<StreamSession>(std::move(source), shared_from_this());
        session->attach(reader);
        return session;
    }
    std::string const key = keyOf(source);
    std::lock_guard const lock(mutex_);
    std::shared_ptr<StreamSession>& session = sessions_[key];
    if (!session) {
        session = std::make_shared<StreamSession>(std::move(source), shared_from_this());
    }
    session->attach(reader);
    return session;
}

void StreamingCore::close(std::shared_ptr<StreamSession> const& session, StreamReader& reader) {
    std::lock_guard const lock(mutex_);
    if (session->detach(reader)) {
        std::erase_if(sessions_, [&session](auto const& entry) { return entry.second == session; });
    }
}

void StreamingCore::end() noexcept {
    ended = true;
    loop.stop();
    stores.stop();
}

void StreamingCore::rememberIndexInFront(std::string const& identity) {
    std::lock_guard const lock(layoutMutex_);
    if (indexInFront_.size() >= mostLayouts) {
        indexInFront_.clear();
    }
    indexInFront_.insert(identity);
}

bool StreamingCore::isIndexInFront(std::string const& identity) {
    std::lock_guard const lock(layoutMutex_);
    return indexInFront_.contains(identity);
}

} // namespace engine
