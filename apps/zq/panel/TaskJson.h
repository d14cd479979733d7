// A task of the host as the panel's JSON.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "apps/zq/FetchJob.h"
#include "host/engine/tasks/TaskQueue.h"
#include "host/json/Builder.h"

namespace zq::panel {

// How far the running transfer of a fetch is.
struct TransferState {
    std::optional<std::uint64_t> bytes; // of the clip's file; of an ended fetch, of all its files
    std::optional<std::uint64_t> totalBytes;
    std::optional<std::uint64_t> secondsLeft; // until the whole task is done
    double progress = 0;                      // of the whole task, from 0 to 1
};

// What is known of a task beside its report. A value.
struct TaskFacts {
    engine::TaskReport report;
    // Of a fetch only:
    std::string repository;
    std::vector<std::string> clips; // their names
    std::size_t clip = 0;           // place of the one that is fetched now, from 1; 0 where none is
    std::size_t fetched = 0;        // how many have been
    TransferState transfer;
    std::vector<UnfetchedClip> failed;
    bool canRetry = false;
};

struct LogLine {
    std::size_t number = 0; // from 1 in its task
    std::string text;
    LoggerBase::eOutputType type = LoggerBase::ePlain;
    int indent = 0;
};

// The task as an object; unnamed where the key is null.
void addTask(JSON::Builder& json, char const* key, TaskFacts const& facts);
void addLines(JSON::Builder& json, char const* key, std::span<LogLine const> lines);

} // namespace zq::panel
