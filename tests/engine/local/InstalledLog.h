// A log in memory behind the host's door, for the scope that it stands in.
#pragma once

#include <algorithm>
#include <string>

#include "host/HostServices.h"
#include "tests/fake_host/FakeSystem.h"

namespace test {

class InstalledLog {
public:
    InstalledLog() {
        HostServices services = installedHost();
        services.log = &sink_;
        before_ = installHost(services);
    }
    ~InstalledLog() { (void)installHost(before_); }
    InstalledLog(InstalledLog const&) = delete;
    InstalledLog& operator=(InstalledLog const&) = delete;

    [[nodiscard]] std::vector<std::string> lines() const { return sink_.lines(); }
    // Number of lines that hold the text.
    [[nodiscard]] std::ptrdiff_t count(std::string_view text) const {
        std::vector<std::string> const all = sink_.lines();
        return std::ranges::count_if(
            all, [text](std::string const& line) { return line.find(text) != std::string::npos; });
    }

private:
    fake::LogSink sink_;
    HostServices before_;
};

} // namespace test
