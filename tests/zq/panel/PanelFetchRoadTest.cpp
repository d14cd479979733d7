// From a placed preview to the full file in its place, over the real service and the Tarn7 client.

#include "tests/road/Faults.h"
#include "tests/zq/panel/WholePanel.h"

#include <filesystem>

#include "apps/zq/Text.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/engine/project/Project.h"

namespace {

namespace fs = std::filesystem;
using namespace panel_tests;
using testing::HasSubstr;
using testing::IsEmpty;

class PanelFetchRoad : public road_tests::Road {
protected:
    PanelFetchRoad() {
        host().client().logout();
        engine::Engine& engine = host().engine();
        panel_ = std::make_unique<WholePanel>(engine, std::vector<iMediaFileRepository*>{&host().client()},
                                              [&engine] { return engine.network().statistics(); });
        static_cast<void>(post("/login", R"({"values":{"username":"ada","password":"secret"}})"));
        auto const page =
            parsed(panel_->call("GET", repository + "/search", {name()}, {{"words", "car"}}).body);
        id_ = text(item(page, "clips", 0), "id");
    }

    std::string name() { return panel_->desk().shortName(); }
    Zq::Ptr<JSON::Element> post(std::string const& what, std::string const& body) {
        return panel_->json("POST", repository + what, {name()}, body);
    }
    Zq::Ptr<JSON::Element> piece() {
        return item(panel_->json("GET", "/sequences/{sequence}", {"cut"}), "pieces", 0);
    }

    std::string const repository = "/repositories/{repository}";
    std::unique_ptr<WholePanel> panel_; // ends before the host
    std::string id_;
};

TEST_F(PanelFetchRoad, LeadsFromAPlacedPreviewToTheFullFile) {
    std::string const clips = "\"clips\":[\"" + id_ + "\"]";
    static_cast<void>(panel_->json("POST", "/sequences/{sequence}/pieces", {"cut"},
                                   "{\"repository\":\"" + name() + "\",\"clip\":\"" + id_ + "\"}"));
    EXPECT_EQ(text(piece(), "state"), "preview");
    EXPECT_EQ(text(piece(), "clip"), id_);
    EXPECT_EQ(panel_->failureOf("POST", repository + "/fetches", {name()}, "{" + clips + "}"), "conflict");
    EXPECT_FALSE(item(post("/checks", "{" + clips + "}"), "checks", 0)->getBool("ok", true));

    static_cast<void>(post("/purchases", "{\"key\":\"k\",\"payment\":\"credits\"," + clips + "}"));
    std::int64_t const task = post("/fetches", "{" + clips + "}")->getInt("task", 0);
    auto const ended = panel_->awaitEnd(task);
    ASSERT_EQ(text(ended, "state"), "done") << text(ended, "text");
    EXPECT_FLOAT_EQ(ended->getFloat("progress", 0), 1.0F);
    EXPECT_FALSE(ended->getBool("canRetry", true));
    EXPECT_EQ(text(piece(), "state"), "full");
    EXPECT_EQ(piece()->getInt("task", -1), 0);
    engine::Project& project = host().engine().project();
    fs::path const file =
        zq::utf8(project.edit(project.findObject(zq::wide(name()), zq::wide(id_))).value().mediaLocation);
    EXPECT_EQ(ended->getInt("bytes", 0), static_cast<std::int64_t>(fs::file_size(file)));
    auto const lines = child(panel_->json("GET", "/tasks/{task}/log", {std::to_string(task)}), "lines");
    EXPECT_GE(lines->getNumChildren(), 2);

    EXPECT_TRUE(item(post("/checks", "{" + clips + "}"), "checks", 0)->getBool("ok", false));
    auto const usage = panel_->json("GET", "/sequences/{sequence}/usage", {"cut"});
    EXPECT_EQ(text(item(usage, "uses", 0), "owned"), "owned");
    EXPECT_EQ(text(usage, "totalText"), "");
    auto const check =
        panel_->call("GET", "/sequences/{sequence}/export", {"cut"}, {{"format", "otio"}, {"check", "1"}});
    EXPECT_EQ(child(parsed(check.body), "warnings")->getNumChildren(), 0);
    EXPECT_EQ(panel_->failureOf("POST", "/tasks/{task}/retry", {std::to_string(task)}), "conflict");
}

TEST_F(PanelFetchRoad, AsksTheServerOfTheRepository) {
    auto const server = item(panel_->json("POST", "/settings/test-connection"), "servers", 0);
    EXPECT_TRUE(server->getBool("ok", false)) << text(server, "text");
    EXPECT_THAT(text(server, "name"), HasSubstr("tarn7"));
}

} // namespace
