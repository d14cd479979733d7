// What the clips of a sequence cost, over all repositories of a panel.
#pragma once

#include <string>

#include "apps/zq/UsageReport.h"
#include "apps/zq/panel/Panel.h"

namespace zq::panel {

// What an account owns is asked for; where the service does not tell, it counts as unknown. Repositories
// whose clips it does not use are left out. Throws ApiError(notFound) where there is no such sequence.
// Thread: any but a desk's.
[[nodiscard]] SequenceUsage usageOf(Panel const& panel, std::string const& sequence);

// The usage as an object. Thread: any.
[[nodiscard]] std::string usageJson(SequenceUsage const& usage);

} // namespace zq::panel
