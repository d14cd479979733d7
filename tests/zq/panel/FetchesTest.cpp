// Fetches of a panel: what pages are told of them, what is refused, and what is begun again.

#include "tests/zq/panel/WholePanel.h"

#include <filesystem>
#include <fstream>
#include <semaphore>

#include "apps/zq/Text.h"
#include "host/engine/project/Project.h"
#include "host/engine/tasks/TaskQueue.h"
#include "host/object/ExtIDMgr.h"

namespace {

namespace fs = std::filesystem;
using namespace panel_tests;
using testing::ElementsAre;
using testing::HasSubstr;

class PanelFetches : public testing::Test {
protected:
    PanelFetches() {
        repository_->signedInUser = L"ada";
        for (std::string const id : {"1", "2", "3"}) {
            addEdit(id);
            owned_.push_back(ShelfRepository::clip(id, "clip " + id, "$5"));
            repository_->thumbnailPaths[zq::wide(id)] = zq::wide((home_.path() / (id + ".mov")).string());
        }
        repository_->onOwned = [this](auto&) { return owned_; };
    }
    ~PanelFetches() override {
        go_.release(100);
        home_.engine().tasks().shutDown();
    }

    void addEdit(std::string const& id) {
        engine::Project& project = home_.engine().project();
        EditModifier edit(project.makeNewClip(1, 0, 2.0, Zq::FrameRate::f25, Cookie()));
        LogAttributeMap attributes;
        attributes.add(LogAttribute(LogAttribute::eName), NarrowString("clip " + id));
        edit->setLogAttributes(attributes);
        edit->setTemporary(false);
        project.associate(edit->getCookie(), L"SH", zq::wide(id));
    }
    // Has a fetch write that much of the clip's file, tell of it, and wait for go_.
    void fetchInParts(std::vector<std::size_t> const& parts, std::size_t whole) {
        repository_->onFetch = [this, parts, whole](auto const& assets, LoggerHandle const& log) {
            fs::path const file = home_.path() / (zq::utf8(assets[0].id) + ".mov");
            log.write(L"begins", LoggerBase::eTransferStarts);
            std::size_t written = 0;
            for (std::size_t const part : parts) {
                std::ofstream(file, std::ios::app) << std::string(part, 'x');
                written += part;
                log.reportProgress(static_cast<double>(written) / static_cast<double>(whole), {});
            }
            reached_.release();
            go_.acquire();
            log.write(L"no more comes", LoggerBase::eTransferFailed);
            return true;
        };
    }
    std::int64_t begin(std::string const& ids) {
        return panel_.json("POST", "/repositories/{repository}/fetches", {"SH"}, "{\"clips\":[" + ids + "]}")
            ->getInt("task", 0);
    }
    std::string refusal(std::string const& ids) {
        return panel_.failureOf("POST", "/repositories/{repository}/fetches", {"SH"},
                                "{\"clips\":[" + ids + "]}");
    }
    Zq::Ptr<JSON::Element> task(std::uint16_t index) {
        return item(panel_.json("GET", "/tasks"), "tasks", index);
    }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    LightweightVector<RemoteAsset> owned_;
    std::counting_semaphore<> reached_{0};
    std::counting_semaphore<> go_{0};
    WholePanel panel_{
        home_.engine(), {repository_.get()}, [] { return std::vector<engine::ServerStatistics>(); }};
};

TEST_F(PanelFetches, TellWhatFailedAndWhyInTheWordsOfTheImportLog) {
    repository_->onFetch = [](auto&, LoggerHandle const& log) {
        log.write(L"clip", LoggerBase::ePlain);
        log.incIndent();
        log.write(L"the disk is full", LoggerBase::eTransferFailed);
        log.decIndent();
        return true;
    };
    std::int64_t const number = begin("\"2\"");
    auto const ended = panel_.awaitEnd(number);
    EXPECT_EQ(text(ended, "state"), "failed");
    EXPECT_EQ(text(ended, "repository"), "SH");
    EXPECT_TRUE(ended->getBool("canRetry", false));
    EXPECT_EQ(text(item(ended, "failed", 0), "id"), "2");
    EXPECT_EQ(text(item(ended, "failed", 0), "reason"), "the disk is full");
    EXPECT_EQ(text(item(ended, "failed", 0), "why"), "transfer");
    EXPECT_EQ(text(ended, "kind"), "fetch");
    EXPECT_THAT(texts(ended, "clips"), ElementsAre("clip 2"));
    EXPECT_EQ(ended->getInt("fetched", -1), 0);
    EXPECT_EQ(ended->getInt("clip", -1), 0);
    std::string const path = std::to_string(number);
    auto const lines = child(panel_.json("GET", "/tasks/{task}/log", {path}), "lines");
    ASSERT_EQ(lines->getNumChildren(), 2);
    EXPECT_EQ(lines->getChild(1)->getInt("number", 0), 2);
    EXPECT_EQ(lines->getChild(1)->getInt("indent", 0), 1);
    EXPECT_EQ(text(lines->getChild(0), "kind"), "plain");
    EXPECT_EQ(text(lines->getChild(1), "kind"), "failed");
    auto const later = panel_.call("GET", "/tasks/{task}/log", {path}, {{"since", "1"}});
    EXPECT_EQ(child(parsed(later.body), "lines")->getNumChildren(), 1);
}

TEST_F(PanelFetches, TellTheLinesOfTheImportLogOnceInTheirOrder) {
    repository_->onFetch = [](auto const& assets, LoggerHandle const& log) {
        log.write(assets[0].id, LoggerBase::ePlain);
        return false;
    };
    std::int64_t const number = begin("\"1\",\"2\",\"3\"");
    std::vector<std::int64_t> numbers;
    panel_.awaitEvent("log", [&](auto const& told) {
        for (JSON::ChildMember const& line : JSON::orEmpty(child(told, "lines")).children()) {
            numbers.push_back(line.element->getInt("number", 0));
        }
        return told->getInt("task", 0) == number && numbers.size() >= 3;
    });
    EXPECT_THAT(numbers, ElementsAre(1, 2, 3));
}

TEST_F(PanelFetches, TellBytesWhereTheFileAndTheFractionAgree) {
    fetchInParts({10'000, 15'000, 25'000}, 100'000);
    static_cast<void>(begin("\"1\""));
    reached_.acquire();
    auto const running = task(0);
    EXPECT_EQ(text(running, "state"), "running");
    EXPECT_EQ(running->getInt("bytes", 0), 50'000);
    EXPECT_EQ(running->getInt("totalBytes", 0), 100'000);
    EXPECT_FLOAT_EQ(running->getFloat("progress", 0), 0.5F);
}

TEST_F(PanelFetches, TellNoBytesWhereTheRepositoryWritesElsewhere) {
    repository_->onFetch = [this](auto&, LoggerHandle const& log) {
        log.reportProgress(0.25, {});
        reached_.release();
        go_.acquire();
        return false;
    };
    static_cast<void>(begin("\"1\",\"2\""));
    reached_.acquire();
    EXPECT_FALSE(task(0)->hasNum("bytes"));
    EXPECT_FALSE(task(0)->hasNum("totalBytes"));
    EXPECT_FLOAT_EQ(task(0)->getFloat("progress", 0), 0.125F);
    EXPECT_EQ(task(0)->getInt("clip", -1), 1) << "of two";
}

TEST_F(PanelFetches, GuessNoLengthFromAFractionOfSomethingElse) {
    repository_->onFetch = [this](auto&, LoggerHandle const& log) {
        fs::path const file = home_.path() / "1.mov";
        std::ofstream(file) << std::string(1'000, 'x');
        log.reportProgress(0.5, {});
        log.reportProgress(0.6, {});
        reached_.release();
        go_.acquire();
        return false;
    };
    static_cast<void>(begin("\"1\""));
    reached_.acquire();
    EXPECT_EQ(task(0)->getInt("bytes", 0), 1'000);
    EXPECT_FALSE(task(0)->hasNum("totalBytes"));
}

TEST_F(PanelFetches, FetchNoClipTwiceAtATime) {
    fetchInParts({1'000}, 2'000);
    std::int64_t const number = begin("\"1\"");
    reached_.acquire();
    EXPECT_EQ(refusal("\"2\",\"1\""), "conflict");
    EXPECT_EQ(panel_.fetches().taskOf("SH", "1"), static_cast<std::uint64_t>(number));
    EXPECT_EQ(panel_.fetches().taskOf("SH", "2"), 0U);
    EXPECT_EQ(panel_.fetches().taskOf("XX", "1"), 0U);
    EXPECT_EQ(panel_.json("GET", "/tasks")->getChild("tasks")->getNumChildren(), 1);
    EXPECT_EQ(panel_.failureOf("POST", "/tasks/{task}/retry", {std::to_string(number)}), "conflict");
}

TEST_F(PanelFetches, EndWhenTheyAreCancelledAndTellWhatIsMissing) {
    repository_->onFetch = [this](auto&, LoggerHandle const&) {
        reached_.release();
        go_.acquire();
        return false;
    };
    std::int64_t const number = begin("\"1\",\"2\"");
    std::string const path = std::to_string(number);
    reached_.acquire();
    EXPECT_EQ(panel_.failureOf("DELETE", "/tasks/{task}", {path}), "none");
    EXPECT_EQ(text(task(0), "state"), "cancelling");
    go_.release();
    auto const ended = panel_.awaitEnd(number);
    EXPECT_EQ(text(ended, "state"), "cancelled");
    EXPECT_EQ(child(ended, "failed")->getNumChildren(), 2);
    EXPECT_EQ(text(item(ended, "failed", 1), "reason"), "cancelled");
    EXPECT_EQ(text(item(ended, "failed", 0), "why"), "cancelled");
    EXPECT_EQ(text(item(ended, "failed", 1), "why"), "cancelled") << "its turn did not come";
    EXPECT_TRUE(ended->getBool("canRetry", false));
    EXPECT_EQ(panel_.failureOf("DELETE", "/tasks/{task}", {path}), "conflict");
    EXPECT_EQ(panel_.failureOf("DELETE", "/tasks/{task}", {"99"}), "not_found");
    EXPECT_EQ(panel_.failureOf("DELETE", "/tasks/{task}", {"x"}), "not_found");
}

TEST_F(PanelFetches, BeginAgainWithWhatWasNotFetched) {
    static_cast<void>(panel_.awaitEnd(begin("\"3\",\"1\"")));
    std::vector<std::string> again;
    repository_->onFetch = [&](auto const& assets, LoggerHandle const&) {
        again.push_back(zq::utf8(assets[0].id));
        return false;
    };
    std::int64_t const second = panel_.json("POST", "/tasks/{task}/retry", {"1"})->getInt("task", 0);
    EXPECT_EQ(second, 2);
    static_cast<void>(panel_.awaitEnd(second));
    EXPECT_THAT(again, ElementsAre("3", "1"));
    EXPECT_EQ(panel_.failureOf("POST", "/tasks/{task}/retry", {"9"}), "not_found");
}

TEST_F(PanelFetches, RefuseWhatIsNotOwnedOrNoList) {
    EXPECT_EQ(refusal("\"8\""), "conflict");
    EXPECT_EQ(refusal(""), "bad_request");
    EXPECT_EQ(refusal("3"), "bad_request");
    repository_->signedInUser.clear();
    EXPECT_EQ(refusal("\"1\""), "conflict");
    EXPECT_EQ(child(panel_.json("GET", "/tasks"), "tasks")->getNumChildren(), 0);
    EXPECT_EQ(panel_.failureOf("GET", "/tasks/{task}/log", {"1"}), "not_found");
}

TEST_F(PanelFetches, SayByAWordWhyTheyAreRefused) {
    auto const reasonOf = [this](std::string const& ids) {
        try {
            static_cast<void>(begin(ids));
        } catch (zq::panel::ApiError const& error) {
            return std::string(zq::wordOf(error.reason()));
        } catch (zq::ReasonedError const& error) {
            return std::string(zq::wordOf(error.reason()));
        }
        return std::string("none");
    };
    EXPECT_EQ(reasonOf("\"8\""), "not_owned");
    fetchInParts({1'000}, 2'000);
    static_cast<void>(begin("\"1\""));
    reached_.acquire();
    EXPECT_EQ(reasonOf("\"1\""), "being_fetched");
    repository_->signedInUser.clear();
    EXPECT_EQ(reasonOf("\"2\""), "not_signed_in");
}

TEST_F(PanelFetches, CheckWhatARelinkingWouldDo) {
    std::ofstream(home_.path() / "1.mov") << "no film";
    auto const answer =
        panel_.json("POST", "/repositories/{repository}/checks", {"SH"}, R"({"clips":["1","2","7"]})");
    auto const broken = item(answer, "checks", 0);
    EXPECT_EQ(text(broken, "clip"), "1");
    EXPECT_FALSE(broken->getBool("ok", true));
    EXPECT_THAT(text(broken, "text"), HasSubstr("1.mov"));
    EXPECT_EQ(text(broken, "outcome"), "unusable");
    EXPECT_THAT(text(item(answer, "checks", 1), "text"), HasSubstr("is not on this machine"));
    EXPECT_EQ(text(item(answer, "checks", 1), "outcome"), "no_file");
    EXPECT_THAT(text(item(answer, "checks", 2), "text"), HasSubstr("no edit"));
    EXPECT_EQ(text(item(answer, "checks", 2), "outcome"), "no_edit");
    EXPECT_TRUE(fs::exists(home_.path() / "1.mov"));
}

} // namespace
