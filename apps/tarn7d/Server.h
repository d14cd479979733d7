// The service as one object: catalogue, accounts, renditions and the TLS server in front of them.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/tarn7d/WallClock.h"

namespace tarn7d {

class FaultDesk;

// Under which name the addresses of payment pages lead to the service. A browser needs to find it, and does
// not know where a client's settings send the public name.
enum class PaymentPages {
    onPublicName,
    local, // https://localhost and the port
};

struct ServerOptions {
    std::filesystem::path data;     // made if missing
    std::filesystem::path footage;  // must be there
    std::string host = "127.0.0.1"; // an address of the loopback interface, or "localhost"
    int port = 0;                   // 0: any free one
    // The host name, with a port if it is not 443, under which clients reach thumbnails, previews and full
    // files.
    std::string publicName = "www.tarn7.example";
    // The same of the FrameQuarry protocol, for thumbnails and previews.
    std::string frameQuarryName = "api.framequarry.example";
    std::vector<std::string> furtherNames; // of the certificate, besides the public names and the loopback's
    // Make thumbnails and previews in the background, before anybody asks.
    bool prepareAhead = false;
    std::chrono::milliseconds rescanInterval{1000}; // how often the footage folder is looked through
    // How long a request waits for a preview that is being made; the answer is then 503.
    std::chrono::milliseconds renditionPatience{20000};
    std::chrono::seconds downloadLifetime{15 * 60}; // of the addresses of full files
    std::chrono::seconds paymentLifetime{30 * 60};  // of the addresses of payment pages
    PaymentPages paymentPages = PaymentPages::onPublicName;
    bool faultDesk = false; // offer the fault desk on a port of its own
    WallClock clock = systemSeconds;
};

struct FaultDeskAddress {
    int port = 0;      // of the loopback interface, HTTP
    std::string token; // what its requests have to show
};

class Server {
public:
    // Locks the data folder and opens everything in it. Throws std::runtime_error with a text for the user,
    // also where the host is not of the loopback interface.
    explicit Server(ServerOptions options);
    ~Server();
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;

    // Looks the footage folder through, for at most five seconds before it goes on in the background, and
    // begins to answer. Gives the port. Throws std::runtime_error when the port is taken. Call once.
    int start();

    // Ends all connections and background work, and returns when they have ended. Also done by the
    // destructor.
    void stop();

    // Makes the service go wrong where it is asked to; the same desk that the port serves. Any thread.
    [[nodiscard]] FaultDesk& faults();
    // Where the fault desk listens, once started; empty if it is not asked for.
    [[nodiscard]] std::optional<FaultDeskAddress> faultDesk() const;

    // PEM of the authority that clients have to trust.
    [[nodiscard]] std::filesystem::path caFile() const;

    // Takes in what the footage folder holds now, files that still grow included, before it returns. Any
    // thread.
    void rescan();

    // False if the name is taken or is no name. Any thread.
    [[nodiscard]] bool addAccount(std::string const& name, std::string const& password, std::int64_t credits);

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace tarn7d
