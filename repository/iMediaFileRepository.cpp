#include "repository/iMediaFileRepository.h"

#include "host/text/Unicode.h"

iMediaFileRepository::~iMediaFileRepository() = default;

// The defaults that every repository shares. Those without a further meaning keep their place in the order.

RepositoryDescription iMediaFileRepository::newDescription() const {
    return {};
}
WideString iMediaFileRepository::getName() const {
    return getDescription().name;
}
LightweightVector<std::int32_t> iMediaFileRepository::getMediaKinds() const {
    return {0};
}
LightweightVector<WideString> iMediaFileRepository::getCollections() const {
    return {};
}
LightweightVector<WideString> iMediaFileRepository::getSuggestions() const {
    return {};
}
std::int32_t iMediaFileRepository::getBrowseStyle() const {
    return 0;
}
LightweightVector<WideString> iMediaFileRepository::getPlaces() const {
    return {};
}
LightweightVector<WideString> iMediaFileRepository::getRootPaths() const {
    return {WideString()};
}
LightweightVector<WideString> iMediaFileRepository::getSecondaryRoots() const {
    return {};
}
RemoteAsset iMediaFileRepository::getRootAsset() const {
    return {};
}
bool iMediaFileRepository::hasFolders() const {
    return false;
}
WideString iMediaFileRepository::getStatusText() const {
    return {};
}
WideString iMediaFileRepository::getHelpText() const {
    return {};
}
bool iMediaFileRepository::canUpload() const {
    return false;
}
bool iMediaFileRepository::canRename() const {
    return false;
}

WideString iMediaFileRepository::getAttribute(RemoteAsset const& asset, LogAttribute const& attribute) const {
    return fromUTF8(asset.logAttributes.find(attribute));
}

void iMediaFileRepository::handleAccountChange() {}
std::int32_t iMediaFileRepository::isOffered() const {
    return 1;
}
