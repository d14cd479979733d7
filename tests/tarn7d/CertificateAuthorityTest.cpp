#include "apps/tarn7d/CertificateAuthority.h"

#include <fstream>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using tarn7d::CertificateFiles;
using tarn7d::ensureCertificates;

std::string content(fs::path const& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

struct FreeX509 {
    void operator()(X509* certificate) const noexcept { X509_free(certificate); }
};
using Certificate = std::unique_ptr<X509, FreeX509>;

Certificate read(fs::path const& file) {
    std::string const text = content(file);
    BIO* const bio = BIO_new_mem_buf(text.data(), static_cast<int>(text.size()));
    Certificate certificate(PEM_read_bio_X509(bio, nullptr, nullptr, nullptr));
    BIO_free(bio);
    return certificate;
}

bool isTrusted(CertificateFiles const& files) {
    Certificate const ca = read(files.ca);
    Certificate const server = read(files.certificate);
    X509_STORE* const store = X509_STORE_new();
    X509_STORE_add_cert(store, ca.get());
    X509_STORE_CTX* const context = X509_STORE_CTX_new();
    X509_STORE_CTX_init(context, store, server.get(), nullptr);
    X509_STORE_CTX_set_flags(context, X509_V_FLAG_X509_STRICT);
    X509_STORE_CTX_set_purpose(context, X509_PURPOSE_SSL_SERVER);
    bool const good = X509_verify_cert(context) == 1;
    X509_STORE_CTX_free(context);
    X509_STORE_free(store);
    return good;
}

class CertificateAuthority : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::vector<std::string> const names_{"www.tarn7.example", "localhost", "127.0.0.1", "::1"};
};

TEST_F(CertificateAuthority, TheServersCertificateIsTrustedForItsNamesOnly) {
    CertificateFiles const files = ensureCertificates(folder_.path(), names_);
    EXPECT_TRUE(isTrusted(files));
    Certificate const server = read(files.certificate);
    EXPECT_EQ(X509_check_host(server.get(), "www.tarn7.example", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_host(server.get(), "localhost", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_ip_asc(server.get(), "127.0.0.1", 0), 1);
    EXPECT_EQ(X509_check_ip_asc(server.get(), "::1", 0), 1);
    EXPECT_EQ(X509_check_host(server.get(), "example.com", 0, 0, nullptr), 0);
    EXPECT_EQ(X509_check_ca(server.get()), 0);
}

TEST_F(CertificateAuthority, PrivateKeysAreForTheirOwnerAlone) {
    CertificateFiles const files = ensureCertificates(folder_.path(), names_);
    using fs::perms;
    EXPECT_EQ(fs::status(files.key).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_EQ(fs::status(folder_.path() / "ca.key").permissions(), perms::owner_read | perms::owner_write);
}

TEST_F(CertificateAuthority, GoodFilesAreKept) {
    CertificateFiles const files = ensureCertificates(folder_.path(), names_);
    std::string const ca = content(files.ca);
    std::string const certificate = content(files.certificate);
    (void)ensureCertificates(folder_.path(), names_);
    EXPECT_EQ(content(files.ca), ca);
    EXPECT_EQ(content(files.certificate), certificate);
}

TEST_F(CertificateAuthority, OtherNamesGetANewCertificateOfTheSameAuthority) {
    CertificateFiles const files = ensureCertificates(folder_.path(), names_);
    std::string const ca = content(files.ca);
    (void)ensureCertificates(folder_.path(), {"media.example", "localhost"});
    EXPECT_EQ(content(files.ca), ca);
    EXPECT_TRUE(isTrusted(files));
    EXPECT_EQ(X509_check_host(read(files.certificate).get(), "media.example", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_host(read(files.certificate).get(), "www.tarn7.example", 0, 0, nullptr), 0);
}

TEST_F(CertificateAuthority, DamagedOrForeignFilesAreMadeAnew) {
    CertificateFiles const files = ensureCertificates(folder_.path(), names_);
    std::ofstream(files.key) << "garbage";
    (void)ensureCertificates(folder_.path(), names_);
    EXPECT_TRUE(isTrusted(files));
    EXPECT_NE(content(files.key), "garbage");

    std::string const ca = content(files.ca);
    fs::remove(folder_.path() / "ca.key");
    (void)ensureCertificates(folder_.path(), names_);
    EXPECT_NE(content(files.ca), ca);
    EXPECT_TRUE(isTrusted(files));
}

TEST_F(CertificateAuthority, OnlyNamesAndAddressesAreTaken) {
    EXPECT_THROW((void)ensureCertificates(folder_.path(), {}), std::runtime_error);
    EXPECT_THROW((void)ensureCertificates(folder_.path(), {"a,DNS:evil.example"}), std::runtime_error);
    EXPECT_THROW((void)ensureCertificates(folder_.path(), {""}), std::runtime_error);
    EXPECT_THROW((void)ensureCertificates(folder_.path() / "missing", {"localhost"}), std::runtime_error);
}

} // namespace
