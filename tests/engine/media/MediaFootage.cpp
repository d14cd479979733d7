#include "tests/engine/media/MediaFootage.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <unistd.h>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/md5.h>
}

#include "apps/tarn7d/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

namespace fs = std::filesystem;

namespace {

struct Row {
    char const* name;
    char const*
        source; // another file of this table; empty: a test picture, and a tone where sound is asked for
    char const* arguments;
};

constexpr char const* picture25 = "-f lavfi -i testsrc2=s=320x240:r=25:d=2";
constexpr char const* tone = "-f lavfi -i sine=f=440:d=2";

// Twelve frames a group and two B-frames: a time lies far from its key frame more often than not.
#define X264 "-c:v libx264 -preset veryfast -g 12 -bf 2 -pix_fmt yuv420p "

constexpr Row rows[] = {
    {"front.mp4", "picture25 tone", X264 "-c:a aac -ac 2 -movflags +faststart"},
    {"end.mov", "-f lavfi -i testsrc2=s=320x240:r=30000/1001:d=2", X264},
    {"end_sound.mp4", "picture25 tone", X264 "-c:a aac -ac 1"},
    {"open_groups.mp4", "picture25", X264 "-x264-params open-gop=1:keyint=12:min-keyint=12"},
    {"jpeg.mov", "picture25 tone", "-c:v mjpeg -c:a pcm_s16le -ac 1 -ar 48000"},
    {"prores.mov", "-f lavfi -i testsrc2=s=320x240:r=24000/1001:d=1", "-c:v prores -profile:v 1"},
    {"prores_fields.mov", "-f lavfi -i testsrc2=s=720x486:r=30000/1001:d=0.5,setfield=bff",
     "-c:v prores_ks -profile:v 1 -flags +ildct+ilme -top 0"},
    {"h264_fields.mp4", "-f lavfi -i testsrc2=s=720x576:r=25:d=1,setfield=tff",
     X264 "-flags +ildct+ilme -top 1"},
    {"fields_against_header.mp4", "-f lavfi -i testsrc2=s=720x576:r=25:d=0.5,setfield=bff",
     X264 "-flags +ildct+ilme -top 0"},
    {"dv.mov", "-f lavfi -i testsrc2=s=720x480:r=30000/1001:d=0.5,setfield=bff,setdar=4/3",
     "-c:v dvvideo -pix_fmt yuv411p -top 0"},
    {"coarse_times.mkv", "-f lavfi -i testsrc2=s=320x240:r=24000/1001:d=2", X264},
    {"late_start.ts", "picture25 tone", X264 "-c:a mp2 -ac 2"},
    {"fragments.mp4", "picture25", X264 "-movflags +frag_keyframe"},
    {"jpeg.avi", "picture25", "-c:v mjpeg"},
    {"fast.mp4", "-f lavfi -i testsrc2=s=160x120:r=60000/1001:d=1", X264},
    {"rate29.mp4", "-f lavfi -i testsrc2=s=160x120:r=29:d=1", X264},
    {"varying.mp4", "picture25", X264 "-vf select=not(between(n\\,10\\,19)) -fps_mode passthrough"},
    {"two_sounds.mov", "picture25 tone tone",
     "-map 0:v -map 1:a -map 2:a -c:v mjpeg -c:a pcm_s16le -ac:a:0 2 -ac:a:1 1"},
    {"sound.mp4", "tone", "-c:a aac -ac 2"},
    {"one_frame.mov", "-f lavfi -i testsrc2=s=160x120:r=25:d=0.04", "-c:v mjpeg"},
    {"larger.mp4", "-f lavfi -i testsrc2=s=1280x720:r=25:d=8,noise=alls=20:allf=t",
     X264 "-b:v 6M -maxrate 6M -bufsize 6M"},
    {"larger_front.mp4", "larger.mp4", "-c copy -movflags +faststart"},
    {"trimmed.mp4", "front.mp4", "-c copy -an"},
};
#undef X264

std::vector<std::string> words(std::string const& text) {
    std::istringstream in(text);
    std::vector<std::string> all;
    for (std::string word; in >> word;) {
        std::vector<std::string> const more = word == "picture25" ? words(picture25)
                                              : word == "tone"    ? words(tone)
                                                                  : std::vector<std::string>{word};
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

// The words in front of the output's own.
std::vector<std::string> inputOf(Row const& row) {
    std::string const source = row.source;
    bool const isFile = std::ranges::any_of(rows, [&](Row const& other) { return source == other.name; });
    if (!isFile) {
        return words(source);
    }
    std::string const file = mediaFootage(source).string();
    // Cut within a group: what lies between its key frame and the cut stays in the file, unseen.
    return std::string(row.name) == "trimmed.mp4" ? std::vector<std::string>{"-ss", "0.7", "-i", file}
                                                  : std::vector<std::string>{"-i", file};
}

std::string hexadecimal(std::array<std::uint8_t, 16> const& bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::uint8_t const byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

} // namespace

void runFFmpeg(std::vector<std::string> const& arguments) {
    std::vector<std::string> all{"ffmpeg", "-nostdin", "-v", "error", "-y"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    tarn7d::ProcessResult const result = tarn7d::runProcess(all, {});
    if (result.exitStatus != 0) {
        throw std::runtime_error("ffmpeg: " + result.errors);
    }
}

fs::path mediaFootage(std::string const& name) {
    fs::path const kept = fs::path(ZQ_MEDIA_FOOTAGE) / name;
    if (fs::exists(kept)) {
        return kept;
    }
    Row const* const row = std::ranges::find(rows, name, &Row::name);
    if (row == std::end(rows)) {
        throw std::runtime_error("no such footage: " + name);
    }
    fs::create_directories(kept.parent_path());
    // Each test is a process of its own: two may make the same file at a time, each under its own name. Their
    // noise differs, so the first one stays.
    fs::path const temporary = kept.parent_path() / (std::to_string(::getpid()) + "-" + name);
    std::vector<std::string> arguments = inputOf(*row);
    std::vector<std::string> const output = words(row->arguments);
    arguments.insert(arguments.end(), output.begin(), output.end());
    arguments.push_back(temporary.string());
    runFFmpeg(arguments);
    std::error_code taken;
    fs::create_hard_link(temporary, kept, taken);
    fs::remove(temporary);
    if (taken && !fs::exists(kept)) {
        throw fs::filesystem_error("no footage", kept, taken);
    }
    return kept;
}

std::vector<ReferenceFrame> referenceFrames(fs::path const& file) {
    TemporaryFolder const folder;
    fs::path const list = folder.path() / "frames";
    runFFmpeg(
        {"-i", file.string(), "-map", "0:v:0", "-fps_mode", "passthrough", "-f", "framemd5", list.string()});
    std::ifstream in(list);
    std::vector<ReferenceFrame> frames;
    double unit_s = 0;
    std::int64_t first = 0;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("#tb 0: ")) {
            std::size_t const slash = line.find('/');
            unit_s = std::stod(line.substr(7, slash - 7)) / std::stod(line.substr(slash + 1));
        } else if (!line.starts_with('#')) {
            std::ranges::replace(line, ',', ' ');
            std::istringstream fields(line);
            std::int64_t stream = 0;
            std::int64_t decoding = 0;
            std::int64_t shown = 0;
            std::int64_t duration = 0;
            std::int64_t size = 0;
            ReferenceFrame frame;
            fields >> stream >> decoding >> shown >> duration >> size >> frame.digest;
            first = frames.empty() ? shown : first;
            frame.time_s = static_cast<double>(shown - first) * unit_s;
            frames.push_back(frame);
        }
    }
    if (frames.empty()) {
        throw std::runtime_error("no frames in " + file.string());
    }
    return frames;
}

std::string digestOf(AVFrame const& frame) {
    auto const format = static_cast<AVPixelFormat>(frame.format);
    int const size = av_image_get_buffer_size(format, frame.width, frame.height, 1);
    std::vector<std::uint8_t> samples(static_cast<std::size_t>(std::max(size, 0)));
    if (size <= 0 || av_image_copy_to_buffer(samples.data(), size, frame.data, frame.linesize, format,
                                             frame.width, frame.height, 1) < 0) {
        return "(no samples)";
    }
    std::array<std::uint8_t, 16> digest{};
    av_md5_sum(digest.data(), samples.data(), samples.size());
    return hexadecimal(digest);
}

} // namespace test
