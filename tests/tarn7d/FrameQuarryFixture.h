// The FrameQuarry protocol over a catalogue that is filled by hand, without a network.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "apps/tarn7d/FrameQuarryProtocol.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/FrameQuarryRequests.h"
#include "tests/tarn7d/TestService.h"

namespace test {

class FrameQuarryFixture : public testing::Test {
protected:
    using Element = Zq::Ptr<JSON::Element>;

    // A good request at the service's time.
    [[nodiscard]] FrameQuarryRequest request(std::string keywords = {}) const;
    [[nodiscard]] FrameQuarryRequest pageOf(std::string page, std::string size) const;

    [[nodiscard]] Element ask(std::string const& query) const {
        return parseJson(protocol_.answerSearch(query));
    }
    [[nodiscard]] Element ask(FrameQuarryRequest const& request) const { return ask(request.query()); }
    // The code of a refusal; empty where the answer is a good one, and what is wrong where it is neither.
    [[nodiscard]] static std::string codeOf(Element const& answer);
    [[nodiscard]] std::string code(FrameQuarryRequest const& request) const { return codeOf(ask(request)); }
    [[nodiscard]] std::string code(std::string const& query) const { return codeOf(ask(query)); }

    // The numbers of the clips that are found, in their order.
    [[nodiscard]] std::vector<std::int64_t> found(FrameQuarryRequest const& request) const;
    [[nodiscard]] std::vector<std::int64_t> found(std::string words) const;
    [[nodiscard]] static std::vector<std::int64_t> idsOf(Element const& list);
    [[nodiscard]] std::int64_t total(FrameQuarryRequest const& request) const;
    // The first clip of a search for everything.
    [[nodiscard]] Element firstItem() const;

    [[nodiscard]] static std::set<std::string> keysOf(JSON::Element const& element);

    // Clips of these titles, numbered from 1 on, that words find.
    void putClips(std::vector<std::string> const& titles);

    TemporaryFolder folder_;
    TestService service_{folder_.path()};
    tarn7d::FrameQuarryProtocol protocol_{service_.catalogue, "https://media.example",
                                          [this] { return service_.now; }};
};

} // namespace test
