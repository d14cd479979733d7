// The whole road of a purchase in one go: from a search to a rendered sequence with bought footage.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "apps/zq/FetchJob.h"
#include "apps/zq/SequenceView.h"
#include "apps/zq/Session.h"

namespace zq {

// One step of the walk, done.
struct DemoStep {
    std::string name;
    std::string text; // one line: what came of it
};

// Thread: the main thread.
class DemoWalk {
public:
    // Files of the walk go to the folder, which is made.
    DemoWalk(Session& session, std::filesystem::path folder);

    // Walks it, with a line and a bar for each step. Throws CommandError where a step fails; the steps before
    // it are done and stay.
    void walk();

    [[nodiscard]] std::vector<DemoStep> const& steps() const noexcept { return steps_; }
    [[nodiscard]] std::string const& sequence() const noexcept { return sequence_; }
    // The rendered file; empty where nothing was rendered.
    [[nodiscard]] std::filesystem::path const& rendered() const noexcept { return rendered_; }
    [[nodiscard]] std::int64_t renderedFrames() const noexcept { return renderedFrames_; }
    [[nodiscard]] std::int64_t sequenceFrames() const noexcept { return sequenceFrames_; }

private:
    struct Step;
    static Step const road[];

    [[nodiscard]] std::string signInStep();
    [[nodiscard]] std::string searchStep();
    [[nodiscard]] std::string playStep();
    [[nodiscard]] std::string placeStep();
    [[nodiscard]] std::string costStep();
    [[nodiscard]] std::string buyStep();
    [[nodiscard]] std::string ownedStep();
    [[nodiscard]] std::string cancelledFetchStep();
    [[nodiscard]] std::string fetchStep();
    [[nodiscard]] std::string compareStep();
    [[nodiscard]] std::string exportStep();
    [[nodiscard]] std::string renderStep();

    // Assets of the list of what is owned that the walk has chosen.
    [[nodiscard]] LightweightVector<RemoteAsset> chosenAndOwned() const;
    [[nodiscard]] std::string label(char const* name) const;
    void showProgress(double fraction) const;

    Session& session_;
    std::filesystem::path const folder_;
    std::vector<DemoStep> steps_;
    char const* running_ = "";
    LightweightVector<RemoteAsset> chosen_;
    std::vector<std::string> toBuy_; // numbers of those that were not owned when they were chosen
    std::string sequence_;
    std::optional<SequenceView> placed_; // as it was before anything was fetched
    LightweightVector<RemoteAsset> owned_;
    std::filesystem::path exported_;
    std::filesystem::path rendered_;
    std::int64_t renderedFrames_ = 0;
    std::int64_t sequenceFrames_ = 0;
};

} // namespace zq
