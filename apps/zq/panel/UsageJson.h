// What the clips of a sequence cost, over all repositories: as the panel's JSON, and as a table.
#pragma once

#include <string>
#include <vector>

#include "apps/zq/UsageReport.h"
#include "apps/zq/panel/Panel.h"
#include "host/engine/project/Sequence.h"

namespace zq::panel {

// The report of one repository.
struct RepositoryUsage {
    std::string repository; // short name
    UsageReport report;
};

// The uses of a sequence.
struct SequenceUsage {
    engine::Sequence sequence;
    std::vector<RepositoryUsage> parts; // of the repositories whose clips it uses
};

// What an account owns is asked for; where the
// service does not tell, it counts as unknown. Throws ApiError(notFound) where there is no such sequence.
// Thread: any but a desk's.
[[nodiscard]] SequenceUsage usageOf(Panel const& panel, std::string const& sequence);

// All of them as one report. Thread: any, for both.
[[nodiscard]] std::string usageJson(SequenceUsage const& usage);
[[nodiscard]] std::string usageCsv(SequenceUsage const& usage);

} // namespace zq::panel
