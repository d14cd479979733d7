#include "host/engine/network/TrustStore.h"

#include <new>

#include <openssl/err.h>
#include <openssl/ssl.h>

#include "host/engine/network/CurlOption.h"

namespace engine {

TrustStore::TrustStore(std::filesystem::path const& extra) : store_(X509_STORE_new()) {
    if (!store_) {
        throw std::bad_alloc();
    }
    // The system's authorities are looked up in their folder when one is asked for.
    X509_STORE_set_default_paths(store_.get());
    if (!extra.empty() && X509_STORE_load_file(store_.get(), extra.c_str()) != 1) {
        problem_ = "[network] ca_file cannot be read as PEM certificates: " + extra.string();
    }
    // A certificate in the file is trusted by itself, whoever signed it.
    X509_STORE_set_flags(store_.get(), X509_V_FLAG_PARTIAL_CHAIN);
    ERR_clear_error();
}

void TrustStore::use(CURL* easy) const {
    // libcurl would read the system's whole bundle for every new connection.
    setOption(easy, CURLOPT_CAINFO, nullptr);
    setOption(easy, CURLOPT_CAPATH, nullptr);
    setOption(easy, CURLOPT_SSL_CTX_FUNCTION, &TrustStore::install);
    setOption(easy, CURLOPT_SSL_CTX_DATA, const_cast<TrustStore*>(this));
}

CURLcode TrustStore::install(CURL*, void* context, void* self) {
    // The store for verifying alone: libcurl goes on to fill the other one of the context.
    X509_STORE* const store = static_cast<TrustStore*>(self)->store_.get();
    return SSL_CTX_set1_verify_cert_store(static_cast<SSL_CTX*>(context), store) == 1 ? CURLE_OK
                                                                                      : CURLE_OUT_OF_MEMORY;
}

} // namespace engine
