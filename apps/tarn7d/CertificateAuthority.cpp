#include "apps/tarn7d/CertificateAuthority.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <arpa/inet.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include "apps/tarn7d/PrivateFile.h"

namespace tarn7d {

namespace {

template <auto Function>
struct Free {
    template <typename T>
    void operator()(T* object) const noexcept {
        Function(object);
    }
};

using Key = std::unique_ptr<EVP_PKEY, Free<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Free<X509_free>>;
using Bio = std::unique_ptr<BIO, Free<BIO_free_all>>;
using Extension = std::unique_ptr<X509_EXTENSION, Free<X509_EXTENSION_free>>;
using BigNumber = std::unique_ptr<BIGNUM, Free<BN_free>>;

struct FreeNames {
    void operator()(GENERAL_NAMES* names) const noexcept { GENERAL_NAMES_free(names); }
};
using AlternativeNames = std::unique_ptr<GENERAL_NAMES, FreeNames>;

constexpr long secondsPerDay = 24L * 60 * 60;
constexpr long authorityDays = 3650;
constexpr long serverDays = 397;
constexpr long authorityMarginDays = 90;
constexpr long serverMarginDays = 30;
constexpr std::size_t pemLimitBytes = 64 * 1024;

struct Identity {
    Certificate certificate;
    Key key;

    explicit operator bool() const noexcept { return certificate != nullptr && key != nullptr; }
};

void require(bool condition, char const* what) {
    if (!condition) {
        char reason[256] = {};
        ERR_error_string_n(ERR_get_error(), reason, sizeof reason);
        throw std::runtime_error(std::string("cannot make a certificate: ") + what + ": " + reason);
    }
}

bool isAddress(std::string const& name) {
    unsigned char bytes[16];
    return inet_pton(AF_INET, name.c_str(), bytes) == 1 || inet_pton(AF_INET6, name.c_str(), bytes) == 1;
}

// A name becomes part of OpenSSL's extension syntax, in which "," and ":" have a meaning.
bool isPlainName(std::string const& name) {
    constexpr std::size_t longestHostName = 253;
    return !name.empty() && name.size() <= longestHostName &&
           (isAddress(name) || std::all_of(name.begin(), name.end(), [](char c) {
                return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '-' || c == '.';
            }));
}

void addExtension(X509* certificate, X509* issuer, int nid, std::string const& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    Extension const extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
    require(extension != nullptr && X509_add_ext(certificate, extension.get(), -1) == 1, value.c_str());
}

void setName(X509_NAME* name, std::string const& commonName) {
    auto const* text = reinterpret_cast<unsigned char const*>(commonName.data());
    require(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, text, static_cast<int>(commonName.size()),
                                       -1, 0) == 1,
            "name");
}

void setRandomSerial(X509* certificate) {
    constexpr int serialBits = 127; // positive, and within the 20 bytes that certificates allow
    BigNumber const number(BN_new());
    require(number != nullptr && BN_rand(number.get(), serialBits, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1,
            "serial number");
    require(BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate)) != nullptr, "serial number");
}

// A certificate without extensions and signature, valid from an hour ago for clocks that differ.
Identity startIdentity(std::string const& commonName, long days) {
    Identity made{Certificate(X509_new()), Key(EVP_EC_gen("P-256"))};
    require(static_cast<bool>(made), "key");
    X509* const certificate = made.certificate.get();
    require(X509_set_version(certificate, X509_VERSION_3) == 1, "version");
    setRandomSerial(certificate);
    require(X509_gmtime_adj(X509_getm_notBefore(certificate), -3600) != nullptr, "time");
    require(X509_gmtime_adj(X509_getm_notAfter(certificate), days * secondsPerDay) != nullptr, "time");
    require(X509_set_pubkey(certificate, made.key.get()) == 1, "public key");
    setName(X509_get_subject_name(certificate), commonName);
    return made;
}

Identity makeAuthority() {
    // The name carries random digits: two authorities of the same name confuse a client's chain building.
    unsigned char digits[4];
    require(RAND_bytes(digits, sizeof digits) == 1, "random number");
    std::string name = "tarn7d local authority ";
    for (unsigned char const digit : digits) {
        name += "0123456789abcdef"[digit >> 4];
        name += "0123456789abcdef"[digit & 15];
    }
    Identity made = startIdentity(name, authorityDays);
    X509* const certificate = made.certificate.get();
    require(X509_set_issuer_name(certificate, X509_get_subject_name(certificate)) == 1, "issuer");
    addExtension(certificate, certificate, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    addExtension(certificate, certificate, NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(certificate, certificate, NID_subject_key_identifier, "hash");
    require(X509_sign(certificate, made.key.get(), EVP_sha256()) != 0, "signature");
    return made;
}

Identity makeServer(Identity const& authority, std::vector<std::string> const& names) {
    constexpr std::size_t longestCommonName = 64;
    Identity made = startIdentity(names.front().substr(0, longestCommonName), serverDays);
    X509* const certificate = made.certificate.get();
    X509* const issuer = authority.certificate.get();
    require(X509_set_issuer_name(certificate, X509_get_subject_name(issuer)) == 1, "issuer");
    std::string alternatives;
    for (std::string const& name : names) {
        alternatives += alternatives.empty() ? "" : ",";
        alternatives += (isAddress(name) ? "IP:" : "DNS:") + name;
    }
    addExtension(certificate, issuer, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(certificate, issuer, NID_key_usage, "critical,digitalSignature");
    addExtension(certificate, issuer, NID_ext_key_usage, "serverAuth");
    addExtension(certificate, issuer, NID_subject_key_identifier, "hash");
    addExtension(certificate, issuer, NID_authority_key_identifier, "keyid:always");
    addExtension(certificate, issuer, NID_subject_alt_name, alternatives);
    require(X509_sign(certificate, authority.key.get(), EVP_sha256()) != 0, "signature");
    return made;
}

Bio memory(std::string const& text) {
    return Bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

Identity readIdentity(std::filesystem::path const& certificateFile, std::filesystem::path const& keyFile) {
    std::string const certificateText = readSmallFile(certificateFile, pemLimitBytes);
    std::string const keyText = readSmallFile(keyFile, pemLimitBytes);
    if (certificateText.empty() || keyText.empty()) {
        return {};
    }
    Identity read;
    read.certificate.reset(PEM_read_bio_X509(memory(certificateText).get(), nullptr, nullptr, nullptr));
    // A password callback that gives none: a locked key must not stop the service at a prompt.
    auto const noPassword = [](char*, int, int, void*) { return 0; };
    read.key.reset(PEM_read_bio_PrivateKey(memory(keyText).get(), nullptr, noPassword, nullptr));
    if (!read || X509_check_private_key(read.certificate.get(), read.key.get()) != 1) {
        ERR_clear_error();
        return {};
    }
    return read;
}

std::string text(BIO* bio) {
    char* data = nullptr;
    long const size = BIO_get_mem_data(bio, &data);
    return size > 0 ? std::string(data, static_cast<std::size_t>(size)) : std::string();
}

void writeIdentity(Identity const& identity, std::filesystem::path const& certificateFile,
                   std::filesystem::path const& keyFile) {
    Bio const certificate(BIO_new(BIO_s_mem()));
    Bio const key(BIO_new(BIO_s_mem()));
    require(PEM_write_bio_X509(certificate.get(), identity.certificate.get()) == 1, "text form");
    require(PEM_write_bio_PKCS8PrivateKey(key.get(), identity.key.get(), nullptr, nullptr, 0, nullptr,
                                          nullptr) == 1,
            "text form");
    writeFileAtomically(keyFile, text(key.get()), S_IRUSR | S_IWUSR);
    writeFileAtomically(certificateFile, text(certificate.get()), S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
}

bool lastsFor(X509 const* certificate, long days) {
    time_t const now = time(nullptr);
    time_t then = now + days * secondsPerDay;
    return X509_cmp_time(X509_get0_notAfter(certificate), &then) > 0 &&
           X509_cmp_current_time(X509_get0_notBefore(certificate)) < 0;
}

std::vector<std::string> namesOf(X509 const* certificate) {
    AlternativeNames const found(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)));
    std::vector<std::string> names;
    for (int i = 0; found != nullptr && i < sk_GENERAL_NAME_num(found.get()); ++i) {
        GENERAL_NAME const* const name = sk_GENERAL_NAME_value(found.get(), i);
        if (name->type == GEN_DNS) {
            auto const* data = reinterpret_cast<char const*>(ASN1_STRING_get0_data(name->d.dNSName));
            names.emplace_back(data, static_cast<std::size_t>(ASN1_STRING_length(name->d.dNSName)));
        } else if (name->type == GEN_IPADD) {
            int const length = ASN1_STRING_length(name->d.iPAddress);
            char digits[INET6_ADDRSTRLEN] = {};
            inet_ntop(length == 4 ? AF_INET : AF_INET6, ASN1_STRING_get0_data(name->d.iPAddress), digits,
                      sizeof digits);
            names.emplace_back(digits);
        }
    }
    return names;
}

bool servesNames(Identity const& server, Identity const& authority, std::vector<std::string> wanted) {
    std::vector<std::string> present = namesOf(server.certificate.get());
    std::sort(present.begin(), present.end());
    std::sort(wanted.begin(), wanted.end());
    return present == wanted && X509_verify(server.certificate.get(), authority.key.get()) == 1 &&
           lastsFor(server.certificate.get(), serverMarginDays);
}

} // namespace

CertificateFiles ensureCertificates(std::filesystem::path const& folder,
                                    std::vector<std::string> const& names) {
    std::vector<std::string> unique;
    for (std::string const& name : names) {
        if (!isPlainName(name)) {
            throw std::runtime_error("not a host name or address: " + name);
        }
        if (std::find(unique.begin(), unique.end(), name) == unique.end()) {
            unique.push_back(name);
        }
    }
    if (unique.empty()) {
        throw std::runtime_error("a certificate needs at least one name");
    }
    CertificateFiles const files{folder / "ca.pem", folder / "server.pem", folder / "server.key"};
    std::filesystem::path const authorityKey = folder / "ca.key";

    Identity authority = readIdentity(files.ca, authorityKey);
    bool const keepAuthority = authority && lastsFor(authority.certificate.get(), authorityMarginDays);
    if (!keepAuthority) {
        authority = makeAuthority();
        writeIdentity(authority, files.ca, authorityKey);
    }
    Identity const server = readIdentity(files.certificate, files.key);
    if (!keepAuthority || !server || !servesNames(server, authority, unique)) {
        ERR_clear_error();
        writeIdentity(makeServer(authority, unique), files.certificate, files.key);
    }
    return files;
}

} // namespace tarn7d
