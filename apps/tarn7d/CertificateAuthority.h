// The service's own certificate authority: TLS stays on, verified, also for a service on one machine.
//
// A folder holds ca.pem and ca.key (the authority), server.pem and server.key (what the service shows). They
// are made when missing and made anew when they near their end, no longer fit each other or name other hosts.
// The private keys can be read by their owner alone.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tarn7d {

struct CertificateFiles {
    std::filesystem::path ca;          // PEM, what a client is told to trust
    std::filesystem::path certificate; // PEM, the server's
    std::filesystem::path key;         // PEM, the server's private key, mode 0600
};

// Gives a usable set of files for a server that answers to the names: host names, or addresses written in
// digits. The authority is kept across calls as long as it is good, so a client's trust in ca.pem lasts; the
// server's certificate is made anew when it has less than 30 days left or names other hosts. Throws
// std::runtime_error with a readable text when the folder cannot be written. Any thread; calls for one folder
// must not overlap.
[[nodiscard]] CertificateFiles ensureCertificates(std::filesystem::path const& folder,
                                                  std::vector<std::string> const& names);

} // namespace tarn7d
