// What a server checks and opens before it answers anybody, with messages for the user.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <openssl/ssl.h>

#include "apps/tarn7d/CertificateAuthority.h"
#include "apps/tarn7d/Server.h"

namespace tarn7d {

// The numeric address to listen on. Throws std::runtime_error for anything but the loopback interface.
[[nodiscard]] std::string loopbackAddress(std::string const& host);

// The options, unless start would refuse them: told before footage is made, which takes a while. Throws
// std::runtime_error.
[[nodiscard]] ServerOptions checkedOptions(ServerOptions options);

// The folder without links and dots. Throws std::runtime_error when there is none.
[[nodiscard]] std::filesystem::path existingFolder(std::filesystem::path const& folder);

// The data folder. Throws std::runtime_error when it lies in the footage folder: what the service writes must
// not come back to it as footage.
[[nodiscard]] std::filesystem::path dataFolderApart(std::filesystem::path const& data,
                                                    std::filesystem::path const& footage);

[[nodiscard]] std::vector<std::string> certificateNames(ServerOptions const& options);

// Throws std::runtime_error when the files do not belong together.
void useCertificate(SSL_CTX* context, CertificateFiles const& files);

// Makes a store on its file. Throws std::runtime_error naming the file and what the user can do.
template <class Store, class... More>
std::unique_ptr<Store> openOrExplain(char const* what, std::filesystem::path const& file, More&&... more) {
    try {
        return std::make_unique<Store>(file, std::forward<More>(more)...);
    } catch (std::exception const& error) {
        throw std::runtime_error(std::string("cannot open the ") + what + " " + file.string() + ": " +
                                 error.what() +
                                 "; make it writable, put a sound copy in its place, or move it away to "
                                 "begin with an empty one");
    }
}

} // namespace tarn7d
