// The program from its arguments to its exit status.
#pragma once

#include <string>
#include <vector>

namespace zq {

// 0 when every command succeeded, 1 when one failed or the output could not be written, 2 when the arguments,
// the home folder or host.toml cannot be used, 128 and the signal's number when a signal ended the program.
[[nodiscard]] int runProgram(std::vector<std::string> const& arguments);

} // namespace zq
