// The certificate authorities that a server's certificate is checked against: the system's, and one file
// more.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <curl/curl.h>
#include <openssl/x509_vfy.h>

namespace engine {

// Built once; every connection shares it. Thread: any, once built.
class TrustStore {
public:
    // `extra` is a PEM file or empty. Throws std::bad_alloc. A file that cannot be read is named by
    // problem().
    explicit TrustStore(std::filesystem::path const& extra);

    // Makes the TLS connections of the handle trust this store, which outlives the handle.
    void use(CURL* easy) const;
    // Empty, or one line about a file that could not be read.
    [[nodiscard]] std::string const& problem() const noexcept { return problem_; }

private:
    struct Free {
        void operator()(X509_STORE* store) const noexcept { X509_STORE_free(store); }
    };
    static CURLcode install(CURL* easy, void* context, void* self);

    std::unique_ptr<X509_STORE, Free> store_;
    std::string problem_;
};

} // namespace engine
