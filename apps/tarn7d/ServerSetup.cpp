#include "apps/tarn7d/ServerSetup.h"

#include <system_error>

#include <arpa/inet.h>

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

std::string withoutPort(std::string const& name) {
    return name.substr(0, name.find(':'));
}

} // namespace

std::string loopbackAddress(std::string const& host) {
    if (host == "localhost") {
        return "127.0.0.1";
    }
    in_addr four{};
    in6_addr six{};
    bool const isFour = inet_pton(AF_INET, host.c_str(), &four) == 1 && (ntohl(four.s_addr) >> 24) == 127;
    bool const isSix = inet_pton(AF_INET6, host.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six);
    if (!isFour && !isSix) {
        throw std::runtime_error("cannot listen on " + host + ": only the loopback interface is served");
    }
    return host;
}

ServerOptions checkedOptions(ServerOptions options) {
    (void)loopbackAddress(options.host);
    return options;
}

std::vector<std::string> certificateNames(ServerOptions const& options) {
    std::vector<std::string> names{withoutPort(options.publicName),
                                   withoutPort(options.frameQuarryName),
                                   "www.tarn7.example",
                                   "api.framequarry.example",
                                   "localhost",
                                   "127.0.0.1"};
    names.insert(names.end(), options.furtherNames.begin(), options.furtherNames.end());
    return names;
}

void useCertificate(SSL_CTX* context, CertificateFiles const& files) {
    if (SSL_CTX_use_certificate_chain_file(context, files.certificate.c_str()) != 1 ||
        SSL_CTX_use_PrivateKey_file(context, files.key.c_str(), SSL_FILETYPE_PEM) != 1 ||
        SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) != 1) {
        throw std::runtime_error("cannot use the certificate " + files.certificate.string());
    }
    // A client that comes again resumes its session; the name is any constant.
    constexpr unsigned char sessionContext[] = "tarn7d";
    SSL_CTX_set_session_id_context(context, sessionContext, sizeof sessionContext - 1);
}

fs::path dataFolderApart(fs::path const& data, fs::path const& footage) {
    fs::path const fromFootage = fs::weakly_canonical(data).lexically_relative(footage);
    if (!fromFootage.empty() && *fromFootage.begin() != "..") {
        throw std::runtime_error("the data folder must not lie in the footage folder");
    }
    return data;
}

fs::path existingFolder(fs::path const& folder) {
    std::error_code error;
    fs::path path = fs::canonical(folder, error);
    if (error || !fs::is_directory(path, error)) {
        throw std::runtime_error("cannot use the footage folder " + folder.string() + ": " +
                                 (error ? error.message() : "not a folder"));
    }
    return path;
}

} // namespace tarn7d
