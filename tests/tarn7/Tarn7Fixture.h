// A Tarn7 client in a host in memory, and the answers that its service gives.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "ServiceValues.h"
#include "host/text/Numbers.h"
#include "tarn7/Command.h"
#include "tests/fake_host/FakeHost.h"
#include "tests/fake_host/Texts.h"

namespace tarn7_tests {

using fake::parsed;
using fake::typedForm;
using fake::utf8;
using fake::wide;

// The text of a successful answer with these replies, one for each command.
inline std::string answerOf(std::initializer_list<std::string_view> replies) {
    std::string text = R"({"e":false,"commands":[)";
    for (std::string_view const reply : replies) {
        text += text.back() == '[' ? "" : ",";
        text += reply;
    }
    return text + "]}";
}

// The answer to a search that found these items; `figures` are further members of the reply, with a comma in
// front of each.
inline std::string foundItems(std::string_view items, std::string_view figures = R"(,"tot_nbr_rows":1)") {
    std::string reply = R"({"icon_base":"https://cdn.test/i","flv_base":"https://cdn.test/p","items":)";
    return answerOf({reply.append(items).append(figures).append("}")});
}

// The client with what is hidden from its host laid open.
class TestResource : public Tarn7Resource {
public:
    using MediaFileRepositoryBase::eFullMedia;
    using MediaFileRepositoryBase::ePreview;
    using MediaFileRepositoryBase::eThumbnail;
    using MediaFileRepositoryBase::partialFolder;
    using MediaFileRepositoryBase::providerPointer;
    using MediaFileRepositoryBase::purchasedIds;
    using MediaFileRepositoryBase::searchResultCache;
    using MediaFileRepositoryBase::signedInUser;
    using Tarn7Resource::clipCache;
    using Tarn7Resource::createEdit;
    using Tarn7Resource::digestService;
    using Tarn7Resource::getClipData;
    using Tarn7Resource::getFileExtension;
    using Tarn7Resource::getLocalMediaLocation;
    using Tarn7Resource::getRemoteLocation;
    using Tarn7Resource::hqProxies;
    using Tarn7Resource::iconBase;
    using Tarn7Resource::previewBase;
    using Tarn7Resource::runSearch;
    using Tarn7Resource::searchInternal;
    using Tarn7Resource::sendCommand;
    using Tarn7Resource::sendCommands;
    using Tarn7Resource::sessionContext;
    using Tarn7Resource::sessionMarker;
    using Tarn7Resource::signedHash;
    using Tarn7Resource::syncCart;
};

// Runs a test body with the client in a host whose network answers nothing yet.
class Tarn7Test : public testing::Test {
protected:
    // A server that can be asked; what it answers is the test's to say.
    void connect() { ASSERT_EQ(resource.connect(resource.getDescription().connection, LoggerHandle()), 0); }
    // Signs in as "ada" with the session numbers 12 and 34, and forgets the request.
    void signIn() {
        host.network.answerWith(answerOf({R"({"cx":12,"cm":34})"}));
        ASSERT_EQ(resource.login(typedForm("ada", "secret")), 0);
        host.network.forgetRequests();
    }
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
    [[nodiscard]] std::string lastBody() const { return host.network.lastRequest().body; }

    fake::Host host;
    TestResource resource;
};

} // namespace tarn7_tests
