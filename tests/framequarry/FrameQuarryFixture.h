// A FrameQuarry client in a host in memory, and the answers that its service gives.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ServiceValues.h"
#include "tests/fake_host/FakeHost.h"
#include "tests/fake_host/Texts.h"
#include "tests/framequarry/ProviderParts.h"

namespace framequarry_tests {

using fake::parsed;
using fake::typedForm;
using fake::utf8;
using fake::wide;

// The answer to a search that found these items; `figures` are further members, with a comma in front of
// each.
inline std::string answerOf(std::string_view items, std::string_view figures = R"(,"totalSearchResults":1)") {
    return std::string(R"({"info":)").append(items).append(figures).append("}");
}

// An item that becomes an asset, with these further members.
inline std::string itemWith(std::string_view members) {
    std::string item = R"({"download_format_details":[{"frame_rate":25}])";
    return item.append(members.empty() ? "" : ",").append(members).append("}");
}

// The client with what is hidden from its host laid open.
class TestResource : public Copying<MappingForReading<MappingForWriting<FrameQuarryResource>>> {
public:
    using FrameQuarryResource::createEdit;
    using FrameQuarryResource::digestService;
    using FrameQuarryResource::getFileExtension;
    using FrameQuarryResource::getLocalMediaLocation;
    using FrameQuarryResource::getRemoteLocation;
    using FrameQuarryResource::lock;
    using FrameQuarryResource::searchInternal;
    using MediaFileRepositoryBase::eFullMedia;
    using MediaFileRepositoryBase::ePreview;
    using MediaFileRepositoryBase::eThumbnail;
    using MediaFileRepositoryBase::partialFolder;
    using MediaFileRepositoryBase::providerPointer;
    using MediaFileRepositoryBase::purchasedIds;
    using MediaFileRepositoryBase::searchResultCache;
    using MediaFileRepositoryBase::signedInUser;
};

// Runs a test body with the client in a host whose network answers nothing yet.
class FrameQuarryTest : public testing::Test {
protected:
    // A server that can be asked; what it answers is the test's to say.
    void connect() { ASSERT_EQ(resource.connect(resource.getDescription().connection, LoggerHandle()), 0); }
    // The page that the answer becomes. Connects where that was not done yet.
    SearchResults pageOf(std::string answer, std::uint16_t pageSize = 25) {
        if (!resource.isConnected()) {
            connect();
        }
        host.network.answerWith(std::move(answer));
        SearchQuery query;
        query.pageSize = pageSize;
        return resource.searchInternal(query);
    }
    // The only asset of an answer with that item.
    RemoteAsset assetOf(std::string const& item) {
        SearchResults const page = pageOf(answerOf("[" + item + "]"));
        EXPECT_EQ(page.assets.size(), 1U) << item;
        return page.assets.empty() ? RemoteAsset() : page.assets.front();
    }
    // An asset as the search makes it, with these members in its item, at that rate.
    static RemoteAsset assetWith(std::string const& members, Zq::FrameRate rate = Zq::FrameRate::f25) {
        RemoteAsset asset;
        asset.id = L"123";
        asset.mediaExtension = L"mp4";
        asset.payload = parsed("{" + members + "}");
        asset.frameRate = rate;
        return asset;
    }
    static std::string logText(RemoteAsset const& asset, LogAttribute::eType type) {
        return std::string(asset.logAttributes.find(LogAttribute(type)).view());
    }

    fake::Host host;
    TestResource resource;
};

} // namespace framequarry_tests
