#include "tests/zq/ProgramFixture.h"

#include <fstream>
#include <sstream>

namespace zq_tests {

namespace fs = std::filesystem;

fs::path ProgramFixture::programFile(char const* name) {
    return fs::path(ZQ_PROGRAM_FOLDER) / name;
}

fs::path ProgramFixture::testModule(std::string const& name) {
    return fs::path(ZQ_TEST_MODULES) / (name + ".zqd");
}

ProgramFixture::ProgramFixture() : home_(folder_.path() / "home") {
    fs::create_directory(home_);
    environment = {"HOME=" + folder_.path().string(), "ZQ_HOME=" + home_.string(), "LANG=C.UTF-8",
                   "TERM=xterm"};
}

void ProgramFixture::configure(std::vector<fs::path> const& modules, std::string_view rest) {
    fs::path const place = folder() / "modules";
    fs::remove_all(place);
    fs::create_directory(place);
    for (fs::path const& module : modules) {
        fs::copy(module, place / module.filename());
    }
    std::ofstream(home_ / "host.toml") << "[modules]\npath = [\"" << place.string() << "\"]\n" << rest;
}

std::string ProgramFixture::network(std::string const& server, fs::path const& ca) {
    std::string text = "[network]\nconnect = { \"www.tarn7.example:443\" = \"" + server + "\" }\n";
    return ca.empty() ? text : text + "ca_file = \"" + ca.string() + "\"\n";
}

std::unique_ptr<RunningProgram> ProgramFixture::start(Words const& words,
                                                      RunningProgram::Around around) const {
    return std::make_unique<RunningProgram>(programFile("zq").string(), words, environment, around);
}

Finished ProgramFixture::run(Words const& words, std::string_view input) const {
    std::unique_ptr<RunningProgram> const program = start(words);
    program->write(input);
    return program->finish();
}

std::vector<std::string> ProgramFixture::answers(std::vector<std::string> const& lines) const {
    std::string input;
    for (std::string const& line : lines) {
        input += line + "\n";
    }
    std::istringstream output(run({"--json", "shell"}, input).out);
    std::vector<std::string> all;
    for (std::string line; std::getline(output, line);) {
        all.push_back(line);
    }
    return all;
}

} // namespace zq_tests
