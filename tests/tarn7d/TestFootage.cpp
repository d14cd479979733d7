#include "tests/tarn7d/TestFootage.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

#include "apps/tarn7d/Process.h"

namespace test {

namespace fs = std::filesystem;

namespace {

struct FootageRow {
    char const* file;
    std::vector<std::string> arguments;
};

FootageRow const& rowOf(Footage footage) {
    static FootageRow const rows[] = {
        {"plain.mov", {"-f", "lavfi", "-i", "testsrc2=s=320x240:r=25", "-frames:v", "25", "-c:v", "mpeg4"}},
        {"interlaced.mov",
         {"-f",       "lavfi",     "-i",   "testsrc2=s=720x480:r=30000/1001,setfield=bff,setdar=4/3",
          "-f",       "lavfi",     "-i",   "sine=f=440",
          "-t",       "0.5",       "-c:v", "dvvideo",
          "-pix_fmt", "yuv411p",   "-top", "0",
          "-c:a",     "pcm_s16le", "-ar",  "48000",
          "-ac",      "2"}},
        {"large.mp4", {"-f",      "lavfi",     "-i",         "testsrc2=s=1920x1080:r=24000/1001",
                       "-f",      "lavfi",     "-i",         "sine=f=440",
                       "-t",      "0.5",       "-c:v",       "libx264",
                       "-preset", "ultrafast", "-profile:v", "main",
                       "-coder",  "1",         "-pix_fmt",   "yuv420p",
                       "-c:a",    "aac",       "-ac",        "1",
                       "-ar",     "44100"}},
        {"fast.mov",
         {"-f", "lavfi", "-i", "testsrc2=s=1280x720:r=50", "-frames:v", "10", "-c:v", "prores", "-profile:v",
          "3"}},
    };
    return rows[static_cast<std::size_t>(footage)];
}

} // namespace

void putFootage(Footage footage, fs::path const& target) {
    FootageRow const& row = rowOf(footage);
    fs::path const kept = fs::path(TARN7D_TEST_FOOTAGE) / row.file;
    if (!fs::exists(kept)) {
        fs::create_directories(kept.parent_path());
        // Each test is a process of its own: two may make the same file at a time, each under its own name.
        fs::path temporary = kept;
        temporary.replace_filename(std::to_string(::getpid()) + "-" + row.file);
        std::vector<std::string> arguments{"ffmpeg", "-nostdin", "-v", "error", "-y"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        arguments.push_back(temporary.string());
        tarn7d::ProcessResult const result = tarn7d::runProcess(arguments, {});
        if (result.exitStatus != 0) {
            throw std::runtime_error("no test footage: " + result.errors);
        }
        fs::rename(temporary, kept);
    }
    fs::create_directories(target.parent_path());
    fs::copy_file(kept, target, fs::copy_options::overwrite_existing);
}

} // namespace test
