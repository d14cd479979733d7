// The installed host program with the example's module and a folder of footage.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/tarn7d/TestFootage.h"
#include "tests/zq/EmbeddedService.h"

namespace zq_tests {

// The folder holds "Harbour/Boat.mov" (25 frames of 320x240 in a second, no sound), "Sunset over sea.mp4"
// (1080 lines at 23.976 with sound) and "ÜBER.MOV", which is a second boat; and the repository shows it.
class ExampleFixture : public ProgramFixture {
protected:
    ExampleFixture();

    [[nodiscard]] std::filesystem::path footage() const { return folder() / "footage"; }
    void show(std::filesystem::path const& folder) const;
    // One command of the example's repository; its answer.
    [[nodiscard]] Zq::Ptr<JSON::Element> ask(Words words) const;
    // A process that reads commands for the example's repository and answers each with a line of JSON.
    [[nodiscard]] std::unique_ptr<RunningProgram> shell() const;
    // The names of the clips on the page that a search finds, in its order.
    [[nodiscard]] std::vector<std::string> search(Words words) const;
    // The number of the one clip that the words find.
    [[nodiscard]] std::string clip(std::string const& words) const;
};

[[nodiscard]] std::string textOf(JSON::Element const& element, char const* key);
[[nodiscard]] std::vector<std::string> namesIn(Zq::Ptr<JSON::Element> const& answer);

} // namespace zq_tests
