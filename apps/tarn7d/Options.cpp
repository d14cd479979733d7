#include "apps/tarn7d/Options.h"

#include <chrono>

#include <CLI/CLI.hpp>

#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

constexpr int unusable = 2;

constexpr char const* footer = R"(
The service watches the footage folder: files that are put there become clips, without a restart. A side file
NAME.toml beside NAME.mov may give title, keywords and price:

    title = "Sunset over the bay"
    keywords = ["sea", "evening"]
    price = 19.99

When it is ready it prints one line: {"ready":true,"port":...,"ca":"..."}. Clients must trust the file "ca" and be
told to reach the public names at that port. SIGTERM or SIGINT ends it.

With --fault-desk the line also has "faultDesk":{"port":...,"token":"..."}: an HTTP port on which a test asks the
service to go wrong in a chosen way.

Examples:
    tarn7d --data ~/tarn7d --footage ~/footage --listen 127.0.0.1:8443
    tarn7d --data demo/data --footage demo/footage --demo
    tarn7d account add anna --credits 100 --data ~/tarn7d)";

// "HOST:PORT", "[::1]:PORT", or a port alone.
std::string splitListen(std::string const& text, ServerOptions& server) {
    std::size_t const colon = text.rfind(':');
    std::string host = colon == std::string::npos ? server.host : text.substr(0, colon);
    if (host.size() > 1 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    std::int64_t port = 0;
    constexpr std::int64_t largestPort = 65535;
    if (!parseInteger(text.substr(colon == std::string::npos ? 0 : colon + 1), port) || port < 0 ||
        port > largestPort || host.empty()) {
        return "must be HOST:PORT with a port from 0 to 65535";
    }
    server.host = host;
    server.port = static_cast<int>(port);
    return {};
}

struct AccountRow {
    char const* name;
    char const* help;
    AccountOptions::Action action;
};

constexpr AccountRow accountRows[] = {
    {"add", "Make an account; the password comes from a prompt or from standard input",
     AccountOptions::Action::add},
    {"list", "Print all accounts with their credits", AccountOptions::Action::list},
    {"remove", "Remove an account", AccountOptions::Action::remove},
    {"credits", "Set the credits of an account", AccountOptions::Action::credits},
    {"password", "Set the password of an account, from a prompt or standard input",
     AccountOptions::Action::password},
    {"block", "Let an account buy nothing", AccountOptions::Action::block},
    {"unblock", "Let an account buy again", AccountOptions::Action::unblock},
};

// No account of a studio holds more, and the sum of all stays far below 64 bits.
CLI::Validator creditsRange() {
    constexpr std::int64_t largest = 1'000'000'000;
    return CLI::Range(std::int64_t{0}, largest);
}

void addAccountCommands(CLI::App& app, AccountOptions& options) {
    CLI::App* const account =
        app.add_subcommand("account", "Work on the accounts, also while the service runs");
    account->require_subcommand(1);
    for (AccountRow const& row : accountRows) {
        CLI::App* const command = account->add_subcommand(row.name, row.help);
        command->add_option("--data", options.data, "Folder of the service's own files")->required();
        if (row.action != AccountOptions::Action::list) {
            command->add_option("name", options.name, "Name of the account")->required();
        }
        if (row.action == AccountOptions::Action::add) {
            command->add_option("--credits", options.credits, "Credits to begin with")->check(creditsRange());
        }
        if (row.action == AccountOptions::Action::credits) {
            command->add_option("amount", options.credits, "Credits the account has from now on")
                ->required()
                ->check(creditsRange());
        }
        command->callback([&options, action = row.action] { options.action = action; });
    }
}

} // namespace

ParsedOptions parseOptions(int count, char const* const* arguments) {
    ServeOptions serve;
    AccountOptions account;
    std::string listen = "127.0.0.1:0";
    std::string prepare = "ahead";
    std::string paymentPages;
    std::int64_t downloadMinutes =
        std::chrono::duration_cast<std::chrono::minutes>(serve.server.downloadLifetime).count();

    CLI::App app("tarn7d: serves a folder of footage with the Tarn7 and FrameQuarry protocols over TLS",
                 "tarn7d");
    app.footer(footer);
    CLI::Option* const data =
        app.add_option("--data", serve.server.data,
                       "Folder for the catalogue, accounts, certificates and previews; made if missing");
    CLI::Option* const footage =
        app.add_option("--footage", serve.server.footage, "Folder of the footage, with its folders below");
    app.add_option("--listen", listen, "Loopback address and port; port 0 takes any free one")
        ->capture_default_str()
        ->check([&serve](std::string const& text) { return splitListen(text, serve.server); });
    app.add_option("--public-name", serve.server.publicName,
                   "Host name, and port if not 443, in the addresses of thumbnails, previews and full files")
        ->capture_default_str();
    app.add_option(
           "--framequarry-name", serve.server.frameQuarryName,
           "The same for clients of the FrameQuarry protocol, in the addresses of thumbnails and previews")
        ->capture_default_str();
    app.add_option("--certificate-name", serve.server.furtherNames,
                   "A further host name or address of the certificate; may be repeated");
    app.add_option("--prepare", prepare,
                   "Make previews \"ahead\" in the background or only when \"asked\" for")
        ->capture_default_str()
        ->check(CLI::IsMember({"ahead", "asked"}));
    constexpr std::int64_t longestDownload = 7 * 24 * 60;
    app.add_option("--download-minutes", downloadMinutes,
                   "How long the address of a full file is good after it was given")
        ->capture_default_str()
        ->check(CLI::Range(std::int64_t{1}, longestDownload));
    app.add_option(
           "--payment-pages", paymentPages,
           "Addresses of payment pages: on the \"public\" name, or \"local\" on https://localhost and "
           "the port, where a browser on this computer finds them. Default: public, with --demo local")
        ->check(CLI::IsMember({"public", "local"}));
    app.add_flag("--fault-desk", serve.server.faultDesk,
                 "Open a loopback port on which the service can be made to go wrong, for tests");
    app.add_flag(
        "--demo", serve.demo,
        "Fill the footage folder with generated clips, once, and make the account \"editor\" with the "
        "password \"tarn7\" and 500 credits");
    addAccountCommands(app, account);

    try {
        app.parse(count, arguments);
        if (!app.get_subcommands().empty()) {
            return account;
        }
        if (data->empty() || footage->empty()) {
            throw CLI::RequiredError(data->empty() ? "--data" : "--footage");
        }
    } catch (CLI::ParseError const& error) {
        // The library has a status of its own for each mistake.
        return app.exit(error) == 0 ? 0 : unusable;
    }
    serve.server.prepareAhead = prepare == "ahead";
    serve.server.downloadLifetime = std::chrono::minutes(downloadMinutes);
    if (paymentPages == "local" || (paymentPages.empty() && serve.demo)) {
        serve.server.paymentPages = PaymentPages::local;
    }
    return serve;
}

} // namespace tarn7d
