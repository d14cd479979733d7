#include "host/network/ServiceConnection.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/text/Unicode.h"
#include "tests/host/core/InstalledHost.h"
#include "tests/host/core/PrintText.h"

namespace {

class Bytes final : public iMemHolder {
public:
    explicit Bytes(std::string bytes) : bytes_(std::move(bytes)) {}
    char const* getData() const noexcept override { return bytes_.data(); }
    std::size_t getSize() const noexcept override { return bytes_.size(); }

private:
    std::string bytes_;
};

class Reply final : public iHTTPReply {
public:
    Reply(int status, Zq::Ptr<iMemHolder> body) : status_(status), body_(std::move(body)) {}
    Zq::Ptr<iMemHolder> getBody() override { return body_; }
    int getStatus() const override { return status_; }

private:
    int status_;
    Zq::Ptr<iMemHolder> body_;
};

// Answers every request with one status and the request itself as the body; status 0 answers nothing.
class EchoServer final : public iHTTPServer {
public:
    explicit EchoServer(int status) : status_(status) {}
    Zq::Ptr<iHTTPReply> get(WideString const& path) override { return answer("GET " + text(path)); }
    Zq::Ptr<iHTTPReply> postForm(WideString const& body, WideString const& path) override {
        return answer("POST " + text(path) + " " + text(body));
    }
    int httpGetToReceiver(WideString const& path, iDataReceiver& receiver) override {
        if (receiver.beginReceive(0)) {
            (void)receiver.receiveData(0, Zq::makeShared<Bytes>("FILE " + text(path)));
        }
        receiver.endReceive();
        return status_;
    }

private:
    static std::string text(WideString const& wide) { return std::string(toUTF8(wide).view()); }
    Zq::Ptr<iHTTPReply> answer(std::string const& body) const {
        return status_ != 0 ? Zq::makeShared<Reply>(status_, Zq::makeShared<Bytes>(body)) : Zq::Ptr<Reply>();
    }
    int status_;
};

// Takes every text that does not begin with "POST" for an object with the member "text".
class TextReader final : public iJSONReader {
public:
    TextReader() : installed_(services(*this)) {}
    Zq::Ptr<JSON::Element> parse(iMemHolder const& bytes) override {
        std::string const text(bytes.getData(), bytes.getSize());
        if (text.starts_with("POST")) {
            return {};
        }
        struct Answer final : JSON::Element {
            explicit Answer(std::string const& value) { appendString("text", value); }
        };
        return Zq::makeShared<Answer>(text);
    }

private:
    static HostServices services(iJSONReader& reader) {
        HostServices services;
        services.json = &reader;
        return services;
    }
    InstalledHost installed_;
};

class Receiver final : public iHTTPServer::iDataReceiver {
public:
    bool receiveData(std::uint64_t, Zq::Ptr<iMemHolder> const& block) override {
        text.append(block->getData(), block->getSize());
        return true;
    }
    std::string text;
};

ServiceConnection connectionTo(int status) {
    ServiceConnection connection;
    connection.setServer(Zq::makeShared<EchoServer>(status));
    return connection;
}

TEST(ServiceConnection, WithoutAServerEveryRequestHasNoAnswer) {
    TextReader reader;
    ServiceConnection connection;
    Receiver receiver;
    EXPECT_FALSE(connection.hasServer());
    EXPECT_FALSE(connection.getJson(L"/p"));
    EXPECT_FALSE(connection.get(L"/p"));
    EXPECT_FALSE(connection.postForm(L"a=1", L"/p"));
    EXPECT_EQ(connection.getToReceiver(L"/p", receiver), 0);
    EXPECT_TRUE(receiver.text.empty());
}

TEST(ServiceConnection, RequestsGoToTheServer) {
    ServiceConnection connection = connectionTo(404);
    EXPECT_TRUE(connection.hasServer());
    Zq::Ptr<iHTTPReply> const got = connection.get(L"/a?b");
    ASSERT_TRUE(got);
    EXPECT_EQ(got->getStatus(), 404) << "a reply of any status is a reply";
    EXPECT_EQ(std::string(got->getBody()->getData(), got->getBody()->getSize()), "GET /a?b");
    Zq::Ptr<iHTTPReply> const posted = connection.postForm(L"a=1", L"?page=api");
    ASSERT_TRUE(posted);
    EXPECT_EQ(std::string(posted->getBody()->getData(), posted->getBody()->getSize()), "POST ?page=api a=1");
    Receiver receiver;
    EXPECT_EQ(connection.getToReceiver(L"/f", receiver), 404);
    EXPECT_EQ(receiver.text, "FILE /f");
}

TEST(ServiceConnection, OnlyAnAnswerOfStatus200IsParsed) {
    TextReader reader;
    Zq::Ptr<JSON::Element> const answer = connectionTo(200).getJson(L"/j");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->getString("text"), "GET /j");
    EXPECT_FALSE(connectionTo(201).getJson(L"/j"));
    EXPECT_FALSE(connectionTo(500).getJson(L"/j"));
    EXPECT_FALSE(connectionTo(0).getJson(L"/j"));
}

TEST(ServiceConnection, ANewServerReplacesTheOldAndNullEndsTheConnection) {
    ServiceConnection connection = connectionTo(200);
    connection.setServer(Zq::makeShared<EchoServer>(503));
    EXPECT_EQ(connection.get(L"/")->getStatus(), 503);
    connection.setServer(nullptr);
    EXPECT_FALSE(connection.hasServer());
    EXPECT_FALSE(connection.get(L"/"));
}

TEST(JSONParse, WithoutBytesOrAReaderThereIsNoElement) {
    Zq::Ptr<iMemHolder> const bytes = Zq::makeShared<Bytes>("{}");
    EXPECT_FALSE(JSON::parse(bytes)) << "no reader installed";
    TextReader reader;
    EXPECT_TRUE(JSON::parse(bytes));
    EXPECT_FALSE(JSON::parse(nullptr));
    EXPECT_FALSE(JSON::parse(Zq::makeShared<Bytes>("POST")));
}

} // namespace
