#include "apps/tarn7d/DownloadAddresses.h"

#include <array>
#include <cstdio>
#include <sys/stat.h>

#include "apps/tarn7d/PasswordHash.h"
#include "apps/tarn7d/PrivateFile.h"
#include "apps/tarn7d/Text.h"
#include "host/engine/crypto/Digest.h"

namespace tarn7d {

namespace {

constexpr std::size_t secretBytes = 32;

std::string keptSecret(std::filesystem::path const& file) {
    std::string secret = readSmallFile(file, secretBytes * 2);
    if (secret.size() != secretBytes * 2 ||
        secret.find_first_not_of("0123456789abcdef") != std::string::npos) {
        secret = engine::randomHex(secretBytes);
        constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
        writeFileAtomically(file, secret, ownerOnly);
    }
    return secret;
}

// "NNNNNNNNN[suffix].extension".
std::optional<DownloadAddresses::Target> parseName(std::string_view name) {
    std::size_t const digits = std::min(name.find_first_not_of("0123456789"), name.size());
    std::size_t const dot = name.rfind('.');
    DownloadAddresses::Target target;
    if (dot == std::string_view::npos || dot < digits ||
        !parseInteger(name.substr(0, digits), target.clipId)) {
        return std::nullopt;
    }
    target.extension = name.substr(dot + 1);
    for (ClipVersion const version : {ClipVersion::original, ClipVersion::transcoded}) {
        if (name.substr(digits, dot - digits) == versionRow(version).fileSuffix) {
            target.version = version;
            return target;
        }
    }
    return std::nullopt;
}

} // namespace

DownloadAddresses::DownloadAddresses(std::filesystem::path const& secretFile, std::chrono::seconds lifetime,
                                     WallClock clock)
    : secret_(keptSecret(secretFile)), lifetime_(lifetime), clock_(std::move(clock)) {}

std::string DownloadAddresses::sign(std::string_view path, std::string_view expires) const {
    // No path holds a line end, so the two parts cannot run into each other.
    return engine::hmacSha256Hex(secret_,
                                 "tarn7d full file\n" + std::string(path) + "\n" + std::string(expires));
}

std::string DownloadAddresses::make(Target const& target, Expiry expiry) const {
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), "%09lld", static_cast<long long>(target.clipId));
    std::string const path = std::string(folder) + number.data() +
                             std::string(versionRow(target.version).fileSuffix) + "." + target.extension;
    std::string const expires =
        std::to_string(expiry == Expiry::past ? clock_() - 1 : clock_() + lifetime_.count());
    return path + "?expires=" + expires + "&signature=" + sign(path, expires);
}

std::optional<DownloadAddresses::Target>
DownloadAddresses::check(std::string_view path, std::string_view expires, std::string_view signature) const {
    if (!equalInConstantTime(signature, sign(path, expires)) || !path.starts_with(folder)) {
        return std::nullopt;
    }
    std::int64_t end = 0;
    if (!parseInteger(expires, end) || clock_() >= end) {
        return std::nullopt;
    }
    return parseName(path.substr(folder.size()));
}

} // namespace tarn7d
