// The member of a repository through which its service traffic passes: the current server, or none.
//
// Thread: repository.
#pragma once

#include <cstdint>

#include "host/json/parse.h"
#include "host/network/iHTTPServer.h"

class ZQ_API ServiceConnection {
public:
    virtual ~ServiceConnection();

    // Replaces the connection; null ends it.
    virtual void setServer(Zq::Ptr<iHTTPServer> const& server);
    // GET of a path and query; the parsed answer, null without a server, without an answer of status 200 or
    // when the answer is not JSON.
    [[nodiscard]] virtual Zq::Ptr<JSON::Element> getJson(WideString const& path);
    // GET of a path and query; the reply of any status, null without a server or an answer.
    [[nodiscard]] virtual Zq::Ptr<iHTTPReply> get(WideString const& path);
    // As iHTTPServer::httpGetToReceiver, 0 without a server.
    [[nodiscard]] virtual int getToReceiver(WideString const& path, iHTTPServer::iDataReceiver& receiver);
    // POST of a form; the reply of any status, null without a server or an answer.
    [[nodiscard]] virtual Zq::Ptr<iHTTPReply> postForm(WideString const& body, WideString const& path);

    [[nodiscard]] bool hasServer() const noexcept { return static_cast<bool>(server_); }
    // Rises with each setServer: what was heard over one connection need not hold for the next.
    [[nodiscard]] std::uint64_t getConnectionNumber() const noexcept { return connectionNumber_; }

private:
    Zq::Ptr<iHTTPServer> server_;
    std::uint64_t connectionNumber_ = 0;
};
