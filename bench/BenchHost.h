// A host around the code that is measured: the engine's own JSON reader and hash, and a service that answers
// from memory, so that no network is in the figures.
#pragma once

#include <string>

#include <simdjson.h>

#include "host/HostServices.h"
#include "host/engine/crypto/OpenSSLHash.h"
#include "host/engine/json/SimdjsonReader.h"
#include "tarn7/Command.h"
#include "tests/fake_host/FakePreferences.h"
#include "tests/fake_host/FakeSystem.h"

namespace bench {

// Bytes with room behind them, as the engine receives an answer.
class Answer final : public iMemHolder {
public:
    explicit Answer(std::string const& text) : bytes_(text), size_(text.size()) {
        bytes_.resize(size_ + simdjson::SIMDJSON_PADDING);
    }
    [[nodiscard]] char const* getData() const noexcept override { return bytes_.data(); }
    [[nodiscard]] std::size_t getSize() const noexcept override { return size_; }
    [[nodiscard]] std::size_t getPadding() const noexcept override { return bytes_.size() - size_; }

private:
    std::string bytes_;
    std::size_t size_;
};

// Gives one answer to everything.
class Server final : public iHTTPServer {
public:
    explicit Server(Zq::Ptr<iMemHolder> answer) : answer_(std::move(answer)) {}
    Zq::Ptr<iHTTPReply> get(WideString const&) override { return Zq::makeShared<Reply>(answer_); }
    Zq::Ptr<iHTTPReply> postForm(WideString const&, WideString const&) override {
        return Zq::makeShared<Reply>(answer_);
    }
    int httpGetToReceiver(WideString const&, iDataReceiver&) override { return 0; }

private:
    class Reply final : public iHTTPReply {
    public:
        explicit Reply(Zq::Ptr<iMemHolder> body) : body_(std::move(body)) {}
        Zq::Ptr<iMemHolder> getBody() override { return body_; }
        int getStatus() const override { return 200; }

    private:
        Zq::Ptr<iMemHolder> body_;
    };
    Zq::Ptr<iMemHolder> answer_;
};

class Host {
public:
    Host() {
        HostServices services;
        services.files = &files_;
        services.shell = &shell_;
        services.security = &security_;
        services.preferences = &preferences_;
        services.json = &json_;
        before_ = installHost(services);
    }
    ~Host() { installHost(before_); }
    Host(Host const&) = delete;
    Host& operator=(Host const&) = delete;

private:
    fake::FileManager files_;
    fake::Shell shell_;
    engine::OpenSSLSecurity security_;
    fake::Preferences preferences_;
    engine::SimdjsonReader json_;
    HostServices before_;
};

// The repository, talking to a server in memory.
class Resource : public Tarn7Resource {
public:
    explicit Resource(Zq::Ptr<iHTTPServer> const& server) { ServiceConnection.setServer(server); }
    using Tarn7Resource::searchInternal;
    using Tarn7Resource::searchResultCache;
    using Tarn7Resource::sendCommands;
    using Tarn7Resource::signedHash;
};

} // namespace bench
