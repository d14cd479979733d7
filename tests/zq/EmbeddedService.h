// The built program with a service: the embedded one, with real clips and one account, or one that a test
// plays itself.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "apps/tarn7d/CertificateAuthority.h"
#include "host/json/Element.h"
#include "tests/zq/ProgramFixture.h"

namespace zq_tests {

// A line of JSON; null where it is none.
[[nodiscard]] Zq::Ptr<JSON::Element> parsed(std::string const& line);
[[nodiscard]] std::string errorOf(std::string const& line);
// The keys of an element by kind, each kind in the order of the text.
[[nodiscard]] std::vector<std::string> keysOf(JSON::Element const& element);
// The item of an array of the answer; an element without members where there is none.
[[nodiscard]] JSON::Element const& itemOf(Zq::Ptr<JSON::Element> const& answer, char const* array,
                                          std::uint16_t index);

class Service : public ProgramFixture {
protected:
    // Certificates for the service's name, in a folder of that name.
    [[nodiscard]] tarn7d::CertificateFiles certificates(char const* name = "tls") const;
    void leadTo(std::string const& server, std::filesystem::path const& ca);
};

// Clips "red car" (25 frames of 320x240 in a second) and "sea" (1080 lines, with sound), and the account
// "anna" with the password "open sesame".
class EmbeddedService : public Service {
protected:
    explicit EmbeddedService(Words const& serviceOptions = {}, char const* credits = "100");

    [[nodiscard]] std::string name() const { return "127.0.0.1:" + std::to_string(port_); }
    // The number of the one clip that a search for the words finds.
    [[nodiscard]] std::string clip(std::string const& words) const;
    // Answers of one process in which anna is signed in; that of the sign-in is left out.
    [[nodiscard]] std::vector<std::string> signedIn(std::vector<std::string> const& lines) const;
    // Adds an account; gives what the service's program said.
    Finished addAccount(std::string const& user, std::string const& password, char const* credits) const;

    std::unique_ptr<RunningProgram> service_;
    Finished added_; // of the account
    std::int64_t port_ = 0;
    std::int64_t faultPort_ = 0; // with "--fault-desk"
    std::string faultToken_;
    std::filesystem::path ca_;
};

} // namespace zq_tests
