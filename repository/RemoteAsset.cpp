#include "repository/RemoteAsset.h"

Identified::~Identified() = default;

Identified& Identified::operator=(IdStamp const& newStamp) {
    stamp = newStamp;
    return *this;
}

IdStamp Identified::getStamp() const {
    return stamp;
}

RemoteAsset::RemoteAsset() = default;
RemoteAsset::RemoteAsset(RemoteAsset const& other) = default;
RemoteAsset::RemoteAsset(RemoteAsset&& other) : RemoteAsset(static_cast<RemoteAsset const&>(other)) {}
RemoteAsset& RemoteAsset::operator=(RemoteAsset const& other) = default;
RemoteAsset::~RemoteAsset() = default;
