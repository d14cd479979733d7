// The locks beside the project's file that keep its processes apart. Thread: any.
//
// They lie in files of their own: the system drops SQLite's locks on a file when anybody in the process
// closes it. A lock ends with its descriptor, so with the process too, however that ends.
#pragma once

#include <filesystem>

#include "host/engine/files/FileDescriptor.h"

namespace engine {

// Held while the project is made, checked or brought up to date: nobody sees one that is half made. Waits for
// another's. Throws std::system_error where no lock can be had.
[[nodiscard]] FileDescriptor lockForOpening(std::filesystem::path const& project);

// The lock of the one that changes the project; none where another holds it. Throws as above.
[[nodiscard]] FileDescriptor tryToLockForWriting(std::filesystem::path const& project);

} // namespace engine
