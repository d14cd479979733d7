#include "tests/tarn7d/FrameQuarryFixture.h"

#include "host/engine/storage/Database.h"

namespace test {

FrameQuarryRequest FrameQuarryFixture::request(std::string keywords) const {
    FrameQuarryRequest made(service_.now);
    made.keywords = std::move(keywords);
    return made;
}

FrameQuarryRequest FrameQuarryFixture::pageOf(std::string page, std::string size) const {
    FrameQuarryRequest made = request();
    made.page = std::move(page);
    made.pageSize = std::move(size);
    return made;
}

std::string FrameQuarryFixture::codeOf(Element const& answer) {
    JSON::Element const& element = JSON::orEmpty(answer);
    if (element.getChild("info") != nullptr) {
        return keysOf(element) == std::set<std::string>{"info", "totalSearchResults"} ? "" : "too much";
    }
    bool const isRefusal = keysOf(element) == std::set<std::string>{"status", "code", "message"} &&
                           element.getStringView("status") == "error" &&
                           !element.getStringView("message").empty();
    return isRefusal ? std::string(element.getStringView("code")) : "no answer";
}

std::vector<std::int64_t> FrameQuarryFixture::found(FrameQuarryRequest const& request) const {
    Element const answer = ask(request);
    EXPECT_EQ(codeOf(answer), "");
    return idsOf(JSON::orEmpty(answer).getChild("info"));
}

std::vector<std::int64_t> FrameQuarryFixture::found(std::string words) const {
    return found(request(std::move(words)));
}

std::vector<std::int64_t> FrameQuarryFixture::idsOf(Element const& list) {
    std::vector<std::int64_t> ids;
    for (JSON::ChildMember const& child : JSON::orEmpty(list).children()) {
        ids.push_back(child.element->getInt("id", -1));
    }
    return ids;
}

std::int64_t FrameQuarryFixture::total(FrameQuarryRequest const& request) const {
    return JSON::orEmpty(ask(request)).getInt("totalSearchResults", -1);
}

Zq::Ptr<JSON::Element> FrameQuarryFixture::firstItem() const {
    Element const items = JSON::orEmpty(ask(request())).getChild("info");
    return JSON::orEmpty(items).getChild(0);
}

std::set<std::string> FrameQuarryFixture::keysOf(JSON::Element const& element) {
    std::set<std::string> keys;
    auto const add = [&keys](auto const& members) {
        for (auto const& member : members) {
            keys.emplace(member.key);
        }
    };
    add(element.strings());
    add(element.numbers());
    add(element.flags());
    add(element.children());
    return keys;
}

void FrameQuarryFixture::putClips(std::vector<std::string> const& titles) {
    std::vector<TestClip> clips;
    for (std::string const& title : titles) {
        clips.push_back({.title = title});
    }
    test::putClips(service_.catalogueFile, clips);
    engine::Database(service_.catalogueFile)
        .execute("INSERT INTO clip_text (rowid, title, keywords) SELECT id, title, '' FROM clip");
}

} // namespace test
