// One server that the host talks HTTP to, and what a conversation with it needs.
//
// Every address is relative to the server's root, with or without the leading "/": "?page=api" goes to
// "/?page=api". Certificates are always verified. A cancelled task ends its transfer within half a second.
//
// Thread: any. A request blocks its thread until it has ended; requests of several threads run side by side.
#pragma once

#include <cstdint>
#include <vector>

#include "host/network/iMemHolder.h"
#include "host/object/Ptr.h"
#include "host/text/LightweightString.h"

// The record from which the host makes an iHTTPServer.
struct HTTPConnectionInfo {
    WideString server;               // host name without a scheme; may carry a port, as "localhost:8443"
    std::int32_t port = 0;           // 0: the port of `server`, or the scheme's own
    WideString user;                 // the account that the connection is shown under; never sent
    WideString realm;                // unused by the resources
    std::vector<WideString> headers; // further header lines, "Name: value"
    WideString userAgent;            // empty: the host's own
    std::uint8_t secure = 0;         // the flag: 1 for https
};

class ZQ_API iHTTPReply : public virtual iObject {
public:
    ~iHTTPReply() override;
    [[nodiscard]] virtual Zq::Ptr<iMemHolder> getBody() = 0;
    [[nodiscard]] virtual int getStatus() const = 0;
};

class ZQ_API iHTTPServer : public virtual iObject {
public:
    // Receives one transfer, on the thread that asked for it, in the order begin, blocks, end.
    class ZQ_API iDataReceiver {
    public:
        virtual ~iDataReceiver();
        // Total length in bytes, 0 where the server announces none. False stops the transfer.
        [[nodiscard]] virtual bool beginReceive(std::uint64_t totalLength);
        // One block. The first value is the block's offset in the file. False stops the transfer.
        [[nodiscard]] virtual bool receiveData(std::uint64_t offset, Zq::Ptr<iMemHolder> const& block) = 0;
        // Called once when beginReceive was called, however the transfer ended.
        virtual void endReceive();
    };

    ~iHTTPServer() override;

    // GET; null when no whole answer came, whatever the reason. At most 64 MiB.
    [[nodiscard]] virtual Zq::Ptr<iHTTPReply> get(WideString const& path) = 0;
    // POST of a form, sent at most once; null when no whole answer came. At most 64 MiB.
    [[nodiscard]] virtual Zq::Ptr<iHTTPReply> postForm(WideString const& body, WideString const& path) = 0;
    // GET of a file of any size. The HTTP status if the whole announced body arrived and the receiver took
    // all of it, else 0. The body of an answer other than 200 is not handed to the receiver.
    [[nodiscard]] virtual int httpGetToReceiver(WideString const& path, iDataReceiver& receiver) = 0;
};
