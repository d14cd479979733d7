// Who may ask the panel: the checks that every request passes before anything else is looked at.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <httplib.h>

#include "apps/zq/panel/ApiError.h"

namespace zq::panel {

struct Refusal {
    ErrorCode code;
    int status;
    std::string text;
};

enum class Entry { window, frame };

// Thread: any; nothing in it changes.
class Access {
public:
    static constexpr std::size_t longestBody_bytes = std::size_t{64} << 10;
    static constexpr std::string_view enterPath = "/enter";
    static constexpr char const* keyHeader = "X-Zq-Panel-Key";

    // With new secrets for a server on that port of 127.0.0.1.
    explicit Access(int port);

    // What a person opens to enter, with the token in it.
    [[nodiscard]] std::string address() const;
    [[nodiscard]] bool isToken(std::string_view text) const;
    // The value of the "Set-Cookie" header of those who have entered.
    [[nodiscard]] std::string cookie() const;
    // The page as those get it who enter: with the key that each change has to show, and the address that it
    // goes by from then on. In a frame of another page that address tells that they entered there.
    [[nodiscard]] std::string pageFor(Entry entry, std::string page) const;

    // Why the request is refused, by its head; nothing where its body may be read and its route looked up.
    [[nodiscard]] std::optional<Refusal> judge(httplib::Request const& request) const;

private:
    [[nodiscard]] bool isOwnHost(std::string_view host) const;
    [[nodiscard]] std::string addressFor(Entry entry) const;
    [[nodiscard]] bool hasKey(httplib::Request const& request) const;
    [[nodiscard]] bool mayRead(httplib::Request const& request, std::string_view path) const;
    [[nodiscard]] bool hasCookie(httplib::Request const& request) const;

    std::string const port_;
    std::string const token_;
    std::string const secret_;   // the cookie's value, which browsers send to every port of this machine
    std::string const key_;      // of the page that has entered, which goes to this port alone
    std::string const frameKey_; // of the page in a frame that was entered there
};

// Whether the browser asks for something that it shows in a frame of a page that is not the panel's own.
[[nodiscard]] Entry entryOf(httplib::Request const& request);

// True for a request that announces a body.
[[nodiscard]] bool hasBody(httplib::Request const& request);

} // namespace zq::panel
