#include "apps/tarn7d/AccountCommand.h"

#include <iostream>
#include <memory>
#include <stdexcept>

#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "apps/tarn7d/Accounts.h"
#include "apps/tarn7d/DataFolder.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

// Keeps what is typed off the screen.
class HiddenInput {
public:
    HiddenInput() {
        hidden_ = ::tcgetattr(STDIN_FILENO, &before_) == 0;
        if (hidden_) {
            termios without = before_;
            without.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &without);
        }
    }
    ~HiddenInput() {
        if (hidden_) {
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
            std::cerr << '\n';
        }
    }
    HiddenInput(HiddenInput const&) = delete;
    HiddenInput& operator=(HiddenInput const&) = delete;

private:
    termios before_{};
    bool hidden_ = false;
};

std::string readPassword() {
    if (::isatty(STDIN_FILENO) != 0) {
        std::cerr << "Password: " << std::flush;
    }
    HiddenInput const hidden;
    std::string password;
    if (!std::getline(std::cin, password) || password.empty()) {
        throw std::runtime_error("no password was given");
    }
    return password;
}

void require(bool done, std::string const& otherwise) {
    if (!done) {
        throw std::runtime_error(otherwise);
    }
}

std::unique_ptr<Accounts> open(std::filesystem::path const& file) {
    try {
        return std::make_unique<Accounts>(file);
    } catch (std::exception const& error) {
        throw std::runtime_error("cannot open the accounts " + file.string() + ": " + error.what());
    }
}

void run(AccountOptions const& options) {
    std::filesystem::path const file = options.data / "accounts.db";
    if (options.action == AccountOptions::Action::add) {
        makePrivateFolder(options.data);
    } else {
        require(std::filesystem::exists(file), "there are no accounts in " + options.data.string());
    }
    std::unique_ptr<Accounts> const opened = open(file);
    Accounts& accounts = *opened;
    std::string const missing = "there is no account of that name";
    switch (options.action) {
    case AccountOptions::Action::add:
        require(accounts.add(options.name, readPassword(), options.credits),
                "the name is taken, or is not 1 to 100 plain characters");
        break;
    case AccountOptions::Action::list:
        for (Account const& account : accounts.list()) {
            std::cout << cleanText(account.name) << '\t' << account.credits
                      << (account.paymentsBlocked ? "\tblocked" : "") << '\n';
        }
        break;
    case AccountOptions::Action::remove:
        require(accounts.remove(options.name), missing);
        break;
    case AccountOptions::Action::credits:
        require(accounts.setCredits(options.name, options.credits), missing);
        break;
    case AccountOptions::Action::block:
    case AccountOptions::Action::unblock:
        require(accounts.setPaymentsBlocked(options.name, options.action == AccountOptions::Action::block),
                missing);
        break;
    case AccountOptions::Action::password:
        require(accounts.find(options.name).has_value(), missing);
        require(accounts.setPassword(options.name, readPassword()), missing);
        break;
    }
}

} // namespace

int runAccountCommand(AccountOptions const& options) {
    try {
        run(options);
        return 0;
    } catch (std::exception const& error) {
        std::cerr << "tarn7d: " << error.what() << '\n';
        return 1;
    }
}

} // namespace tarn7d
