// The built host program in a home folder of its own.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/zq/RunningProgram.h"

namespace zq_tests {

class ProgramFixture : public testing::Test {
protected:
    using Words = std::vector<std::string>;

    // The module and programs of this build.
    [[nodiscard]] static std::filesystem::path programFile(char const* name);
    [[nodiscard]] static std::filesystem::path testModule(std::string const& name);

    ProgramFixture();

    // Writes host.toml: the rest of the file stands behind a module path with these modules only.
    void configure(std::vector<std::filesystem::path> const& modules, std::string_view rest = {});
    // The [network] table by which the service's name leads to that server and its authority is trusted.
    [[nodiscard]] static std::string network(std::string const& server, std::filesystem::path const& ca);

    [[nodiscard]] std::unique_ptr<RunningProgram>
    start(Words const& words, RunningProgram::Around around = RunningProgram::Around::pipes) const;
    // Runs the program to its end on that input.
    [[nodiscard]] Finished run(Words const& words, std::string_view input = {}) const;
    // One JSON answer of "zq shell --json" to each line of input.
    [[nodiscard]] std::vector<std::string> answers(std::vector<std::string> const& lines) const;

    [[nodiscard]] std::filesystem::path const& home() const noexcept { return home_; }
    [[nodiscard]] std::filesystem::path const& folder() const noexcept { return folder_.path(); }

    std::vector<std::string> environment; // of the program

private:
    test::TemporaryFolder folder_;
    std::filesystem::path const home_;
};

} // namespace zq_tests
