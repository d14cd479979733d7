// Sockets of loopback for the servers of the benchmarks.
#pragma once

#include <cstdint>

#include "host/engine/files/FileDescriptor.h"

namespace bench {

// Listens on a free port, which `port` then is. Throws std::runtime_error.
[[nodiscard]] engine::FileDescriptor listenOnLoopback(std::uint16_t& port);
// The next connection, without Nagle's delay; nothing where the system gives none now.
[[nodiscard]] engine::FileDescriptor acceptOn(engine::FileDescriptor const& listener);
// Nothing where nobody listens.
[[nodiscard]] engine::FileDescriptor connectToLoopback(std::uint16_t port);

} // namespace bench
