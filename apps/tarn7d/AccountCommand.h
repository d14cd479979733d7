// The account commands of the command line.
#pragma once

#include "apps/tarn7d/Options.h"

namespace tarn7d {

// Does what is asked, with results on standard output and failures on standard error. A password is asked for
// at the terminal without showing it, or read as one line of standard input. Gives the exit status.
[[nodiscard]] int runAccountCommand(AccountOptions const& options);

} // namespace tarn7d
