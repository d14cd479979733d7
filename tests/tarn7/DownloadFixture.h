// Downloads against a service that gives addresses and a server that holds the files, with every step between
// the host's services written down in its order.
#pragma once

#include <deque>
#include <functional>
#include <map>

#include "tests/fake_host/FollowedLog.h"
#include "tests/fake_host/WatchedHost.h"
#include "tests/tarn7/ScriptedService.h"

namespace tarn7_tests {

class DownloadTest : public Tarn7Test {
protected:
    void SetUp() override {
        connect();
        host.network.setBlockSize(4);
        host.network.answerWith([this](fake::Request const& request) { return answerTo(request); });
    }

    // An asset as the list of what the account owns has it.
    static RemoteAsset asset(std::string_view id, std::string_view name = "Sea") {
        RemoteAsset result;
        result.id = wide(id);
        result.mediaExtension = L"mov";
        result.payload = parsed(R"({"tr":"T)" + std::string(id) + R"(","v":"2","dur":"1000"})");
        result.frameRate = Zq::FrameRate::f25;
        result.proxyLocation = L"Virtual:T7 https://cdn.test/p/preview.mov";
        result.logAttributes.add(LogAttribute(LogAttribute::eName), NarrowString(name));
        return result;
    }
    // The edit that was made from the asset before anything is fetched.
    Cookie place(RemoteAsset const& asset) {
        EditModifier const edit = resource.openEdit(asset, iMediaFileRepository::eOpenNormally);
        EXPECT_FALSE(edit.isEmpty());
        return edit.isEmpty() ? Cookie() : edit->getCookie();
    }

    // The service's next reply to a "download".
    void reply(std::string const& reply) { replies_.push_back(answerOf({reply})); }
    void replyWhole(std::string body) { replies_.push_back(std::move(body)); }
    // The service offers the clip's file, and the server of files answers for it.
    void offer(std::string const& id, fake::Answer answer) {
        reply(R"({"e":false,"url":")" + addressOf(id) + R"("})");
        served["/d/" + id + ".mov?sig=1"] = std::move(answer);
    }
    void offerUnreachable(std::string const& id) {
        reply(R"({"e":false,"url":")" + addressOf(id) + R"("})");
        served["/d/" + id + ".mov?sig=1"] = std::nullopt;
    }
    static std::string addressOf(std::string const& id) {
        return "https://files.test:8443/d/" + id + ".mov?sig=1";
    }

    bool fetch(LightweightVector<RemoteAsset> const& assets) {
        bool const result = resource.fetchFullMedia(assets, 0, LoggerHandle(log));
        EXPECT_EQ(log->indent, 0);
        return result;
    }

    // What the service was sent, as the text of its command list each.
    [[nodiscard]] std::vector<std::string> commands() const {
        std::vector<std::string> lists;
        for (fake::Request const& request : host.network.requests()) {
            if (request.method == fake::Request::Method::post) {
                lists.push_back(commandsOf(request));
            }
        }
        return lists;
    }
    // Paths that were asked of servers of files.
    [[nodiscard]] std::vector<std::string> transfers() const {
        std::vector<std::string> paths;
        for (fake::Request const& request : host.network.requests()) {
            if (request.method == fake::Request::Method::get) {
                paths.push_back(request.path);
            }
        }
        return paths;
    }
    [[nodiscard]] std::string fileAt(std::string_view path) const {
        auto const found = host.files.disk->files.find(wide(path));
        return found != host.files.disk->files.end() ? found->second : "(none)";
    }
    [[nodiscard]] std::string mediaOf(Cookie const& edit) const {
        return utf8(host.edits.stateOf(edit).mediaLocation);
    }

    // From here on each step is written down; opening and closing of edits only where asked for.
    std::vector<std::string>& watchSteps() {
        auto const note = [this](std::string const& call) { steps_.push_back(call); };
        auto const noteUnlessOpening = [this](std::string const& call) {
            if (call != "open" && call != "opened" && call != "closed") {
                steps_.push_back(call);
            }
        };
        host.edits.record.listen(noteUnlessOpening);
        host.externalIds.record.listen(note);
        host.actions.record.listen(note);
        watched.files.onCall = [this](char const* call, WideString const& path) {
            steps_.push_back(std::string(call) + " " + utf8(path));
        };
        log->onLine = [this](std::string const& line) { steps_.push_back("line: " + line); };
        watching_ = true;
        return steps_;
    }

    Zq::Ptr<fake::FollowedLog> log = Zq::makeShared<fake::FollowedLog>();
    std::map<std::string, std::optional<fake::Answer>> served; // by path; nothing: cannot be reached
    std::function<void()> onTransfer = [] {};
    fake::WatchedHost watched;

private:
    std::optional<fake::Answer> answerTo(fake::Request const& request) {
        bool const post = request.method == fake::Request::Method::post;
        if (watching_) {
            steps_.push_back(post ? "command" : "transfer " + request.server + request.path);
        }
        if (post) {
            if (replies_.empty()) {
                return std::nullopt;
            }
            std::string body = std::move(replies_.front());
            replies_.pop_front();
            return fake::Answer{std::move(body), 200};
        }
        onTransfer();
        auto const found = served.find(request.path);
        return found != served.end() ? found->second : fake::Answer{"", 404};
    }

    std::deque<std::string> replies_;
    std::vector<std::string> steps_;
    bool watching_ = false;
};

} // namespace tarn7_tests
