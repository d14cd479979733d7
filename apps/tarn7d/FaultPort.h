// The fault desk over HTTP: an own port of the loopback interface, for whoever knows the token.
#pragma once

#include <memory>
#include <string>

#include "apps/tarn7d/FaultDesk.h"

namespace tarn7d {

class FaultPort {
public:
    // Listens on a free port. Throws std::runtime_error when it cannot. The desk outlives it.
    explicit FaultPort(FaultDesk& desk);
    ~FaultPort();
    FaultPort(FaultPort const&) = delete;
    FaultPort& operator=(FaultPort const&) = delete;

    [[nodiscard]] int port() const noexcept;
    // Stands in every request as "Authorization: Bearer TOKEN".
    [[nodiscard]] std::string const& token() const noexcept;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace tarn7d
