// One clip of a repository.
#pragma once

#include <cstdint>

#include "host/attributes/LogAttributeMap.h"
#include "host/object/Identity.h"
#include "host/object/Ptr.h"
#include "host/picture/FrameRate.h"

// A thing that carries a stamp.
class ZQ_API Identified {
public:
    Identified() = default;
    Identified(Identified const&) = default;
    virtual ~Identified();
    virtual Identified& operator=(IdStamp const& newStamp);
    [[nodiscard]] virtual IdStamp getStamp() const;

    IdStamp stamp;

protected:
    Identified& operator=(Identified const&) = default;
};

template <class Number>
struct XY {
    Number x{};
    Number y{};
    [[nodiscard]] bool operator==(XY const&) const = default;
};

// A value, copied freely; its payload is shared. The move form copies too.
class ZQ_API RemoteAsset : public Identified, public virtual iObject {
public:
    RemoteAsset();
    RemoteAsset(RemoteAsset const& other);
    RemoteAsset(RemoteAsset&& other);
    RemoteAsset& operator=(RemoteAsset const& other);
    using Identified::operator=;
    ~RemoteAsset() override;

    std::int32_t assetKind = 1;
    // The service's own element of this asset, kept so that more can be read from it without a request.
    Zq::Ptr<iObject> payload;
    // The service's identity, a decimal number as text.
    WideString id;
    // The local edit of the asset, where one exists.
    Cookie cookie;
    std::int32_t status = 1;
    // Texts of the results list, by column.
    LogAttributeMap displayAttributes;
    // What stays with the asset and is handed to a new edit.
    LogAttributeMap logAttributes;
    WideString auxiliaryText;
    WideString mediaLocation;
    std::uint64_t mediaSize = 0;
    WideString mediaExtension; // without a dot
    WideString proxyLocation;  // of the preview, as a virtual path
    std::uint64_t proxySize = 0;
    WideString proxyExtension; // without a dot
    Zq::FrameRate frameRate = Zq::FrameRate::unknown;
    std::uint64_t auxiliary1 = 0;
    std::uint64_t auxiliary2 = 0;
    XY<int> extent;
    std::uint8_t videoChannels = 0;
    std::uint8_t audioChannels = 0;
};
