#include "host/HostServices.h"
#include "host/network/OSPrivate.h"
#include "host/network/RequestUri.h"
#include "host/network/ServiceConnection.h"

iMemHolder::~iMemHolder() = default;
iHTTPReply::~iHTTPReply() = default;
iHTTPServer::~iHTTPServer() = default;
iHTTPServer::iDataReceiver::~iDataReceiver() = default;
ServiceConnection::~ServiceConnection() = default;
iHash::~iHash() = default;
iSecurity::~iSecurity() = default;
iNetwork::~iNetwork() = default;
iJSONReader::~iJSONReader() = default;

bool iHTTPServer::iDataReceiver::beginReceive(std::uint64_t) {
    return true;
}
void iHTTPServer::iDataReceiver::endReceive() {}

iOSPrivate const& OSPrivate() noexcept {
    static constexpr iOSPrivate root;
    return root;
}

iSecurity& iOSPrivate::security() const noexcept {
    return *installedHost().security;
}
iNetwork& iOSPrivate::network() const noexcept {
    return *installedHost().network;
}

Zq::Ptr<JSON::Element> JSON::parse(Zq::Ptr<iMemHolder> const& bytes) {
    iJSONReader* const reader = installedHost().json;
    return bytes && reader != nullptr ? reader->parse(*bytes) : Zq::Ptr<Element>();
}

WideString RequestUri::getText(Encoding encoding) const {
    WideString text = path;
    wchar_t separator = path.isEmpty() ? L'\0' : L'?';
    for (QueryParameter const& parameter : queryParameters) {
        if (separator != L'\0') {
            text += separator;
        }
        separator = L'&';
        text += parameter.key;
        text += L'=';
        text += encoding == Encoding::on ? OSPrivate().network().encodeUrlComponent(parameter.value)
                                         : parameter.value;
    }
    return text;
}

void ServiceConnection::setServer(Zq::Ptr<iHTTPServer> const& server) {
    server_ = server;
    ++connectionNumber_;
}

Zq::Ptr<JSON::Element> ServiceConnection::getJson(WideString const& path) {
    Zq::Ptr<iHTTPReply> const reply = get(path);
    return reply && reply->getStatus() == 200 ? JSON::parse(reply->getBody()) : Zq::Ptr<JSON::Element>();
}

Zq::Ptr<iHTTPReply> ServiceConnection::get(WideString const& path) {
    return server_ ? server_->get(path) : Zq::Ptr<iHTTPReply>();
}

int ServiceConnection::getToReceiver(WideString const& path, iHTTPServer::iDataReceiver& receiver) {
    return server_ ? server_->httpGetToReceiver(path, receiver) : 0;
}

Zq::Ptr<iHTTPReply> ServiceConnection::postForm(WideString const& body, WideString const& path) {
    return server_ ? server_->postForm(body, path) : Zq::Ptr<iHTTPReply>();
}
