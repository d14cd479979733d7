// The demonstration library as a table: sizes from 486 lines to 4k, the codecs that the service names, rates
// with and without the 1001 factor, prices and lengths on both sides of every filter's choices.
#include "apps/tarn7d/DemoFootage.h"

namespace tarn7d {

namespace {

constexpr std::string_view silent;
constexpr std::string_view tone = "sine=f=220:b=4,volume=0.2";
constexpr std::string_view wind = "anoisesrc=c=brown:a=0.2";
constexpr std::string_view chord = "aevalsrc=0.1*sin(262*2*PI*t)+0.1*sin(330*2*PI*t)+0.1*sin(392*2*PI*t)";

constexpr std::string_view untinted;

constexpr std::string_view dv25ntsc = "-c:v dvvideo -pix_fmt yuv411p";
constexpr std::string_view dv25pal = "-c:v dvvideo -pix_fmt yuv420p";
constexpr std::string_view dv50 = "-c:v dvvideo -pix_fmt yuv422p";
constexpr std::string_view photoJpeg = "-c:v mjpeg -q:v 4 -pix_fmt yuvj422p";
constexpr std::string_view mpeg2Interlaced = "-c:v mpeg2video -b:v 8M -flags +ildct+ilme -pix_fmt yuv420p";
constexpr std::string_view mpeg2Studio = "-c:v mpeg2video -b:v 20M -flags +ildct+ilme -pix_fmt yuv422p";
constexpr std::string_view mpeg4 = "-c:v mpeg4 -q:v 4";
constexpr std::string_view h264High =
    "-c:v libx264 -preset superfast -crf 22 -profile:v high -pix_fmt yuv420p";
constexpr std::string_view h264HighQuick =
    "-c:v libx264 -preset ultrafast -crf 24 -coder 1 -8x8dct 1 -pix_fmt yuv420p";
constexpr std::string_view h264Main =
    "-c:v libx264 -preset superfast -crf 22 -profile:v main -pix_fmt yuv420p";
constexpr std::string_view h264Baseline =
    "-c:v libx264 -preset superfast -crf 23 -profile:v baseline -pix_fmt yuv420p";
constexpr std::string_view proresHq = "-c:v prores -profile:v 3 -pix_fmt yuv422p10le";
constexpr std::string_view prores422 = "-c:v prores -profile:v 2 -pix_fmt yuv422p10le";
constexpr std::string_view proresLt = "-c:v prores -profile:v 1 -pix_fmt yuv422p10le";
constexpr std::string_view proresProxy = "-c:v prores -profile:v 0 -pix_fmt yuv422p10le";
constexpr std::string_view prores4444 = "-c:v prores -profile:v 4 -pix_fmt yuv444p10le";
constexpr std::string_view png = "-c:v png -pix_fmt rgb24";
constexpr std::string_view dnxhdInterlaced = "-c:v dnxhd -b:v 120M -flags +ildct -pix_fmt yuv422p";
constexpr std::string_view dnxhd = "-c:v dnxhd -b:v 120M -pix_fmt yuv422p";

using enum DemoScene;
using enum DemoScan;

constexpr DemoClip clips[] = {
    {"harbour-lights-486.mov", "Harbour lights, archive 1987", "city night archive tape", 300, city, untinted,
     720, 486, "30000/1001", 120, lowerFieldFirst, photoJpeg, tone},
    {"beach-sunset-tape.mov", "Beach sunset, family tape", "sunset sea holiday archive", 400, sunset,
     untinted, 720, 480, "30000/1001", 150, lowerFieldFirst, dv25ntsc, wind},
    {"alpine-hills-pal.mov", "Alpine hills at dawn", "mountains hills morning archive", 499, hills, untinted,
     720, 576, "25", 100, lowerFieldFirst, dv25pal, wind},
    {"night-drive-dv50.mov", "Night drive through town", "city night street", 500, city, "hue=h=20", 720, 576,
     "25", 75, lowerFieldFirst, dv50, tone},
    {"north-sea-576.mpg", "North Sea swell", "sea water waves archive", 650, sea, untinted, 720, 576, "25",
     125, upperFieldFirst, mpeg2Interlaced, wind},
    {"old-observatory-480.mov", "Old observatory night", "stars sky night science", 799, stars, untinted, 720,
     480, "30000/1001", 90, progressive, mpeg4, silent},
    {"paper-sunset-720.mp4", "Paper cut sunset", "sunset sun warm background", 900, sunset, "hue=h=20", 1280,
     720, "24000/1001", 120, progressive, h264High, silent},
    {"river-of-light-720.mp4", "River of light", "abstract loop background gradient", 1000, gradient,
     untinted, 1280, 720, "50", 250, progressive, h264Main, chord},
    {"fractal-coast-720.mp4", "Fractal coast", "fractal abstract mathematics", 1050, mandelbrot, untinted,
     1280, 720, "60000/1001", 120, progressive, h264High, silent},
    {"weaving-pattern-720.mp4", "Weaving pattern", "textile pattern abstract", 1500, weave, untinted, 1280,
     720, "60", 180, progressive, h264Baseline, silent},
    {"cell-colony-720.mov", "Cell colony growing", "biology science microscope life", 1900, life, untinted,
     1280, 720, "25", 100, progressive, mpeg4, silent},
    {"blue-carpet-720.mov", "Blue carpet", "pattern geometry fractal", 2000, carpet, untinted, 1280, 720,
     "30", 90, progressive, photoJpeg, chord},
    {"evening-traffic-1080i.mov", "Evening traffic over the bridge", "city night traffic", 2500, city,
     "hue=h=330", 1920, 1080, "30000/1001", 60, upperFieldFirst, mpeg2Studio, tone},
    {"broadcast-chart-1080i.mov", "Broadcast line-up chart", "test chart colour bars", 1999, chart, untinted,
     1920, 1080, "25", 50, upperFieldFirst, dnxhdInterlaced, tone},
    {"golden-sunset-1080.mov", "Golden sunset over calm water", "sunset sea golden hour sun", 4900, sunset,
     untinted, 1920, 1080, "24", 48, progressive, proresHq, wind},
    {"cornish-hills-1080.mov", "Cornish hills, slow pan", "hills landscape country", 4900, hills,
     "hue=h=-40:s=1.3", 1920, 1080, "24000/1001", 48, progressive, prores422, silent},
    {"arctic-aurora-1080.mov", "Arctic aurora", "aurora northern lights sky night", 4999, aurora, untinted,
     1920, 1080, "25", 75, progressive, proresLt, wind},
    {"deep-water-1080.mov", "Deep water", "sea water blue calm", 5000, sea, "hue=h=15", 1920, 1080,
     "30000/1001", 60, progressive, dnxhd, silent},
    {"starfield-1080.mp4", "Flight through a starfield", "stars space sky", 3500, stars, untinted, 1920, 1080,
     "30", 180, progressive, h264High, silent},
    {"city-glow-1080.mp4", "City glow after rain", "city night rain skyline", 5500, city, untinted, 1920,
     1080, "50", 150, progressive, h264Main, tone},
    {"sunset-timelapse-1080.mp4", "Sunset time-lapse, desert", "sunset desert sun sky", 7900, sunset,
     "hue=h=-12:s=1.2", 1920, 1080, "60000/1001", 120, progressive, h264High, silent},
    {"overlay-glow-1080.mov", "Glow overlay for titles", "overlay title background", 2900, gradient, untinted,
     1920, 1080, "24", 30, progressive, prores4444, silent},
    {"offline-proxy-1080.mov", "Lake crossing, offline copy", "sea lake boat", 990, sea, untinted, 1920, 1080,
     "24", 60, progressive, proresProxy, silent},
    {"logo-reveal-720.mov", "Logo reveal, lossless", "title animation pattern", 1200, carpet, "hue=h=120",
     1280, 720, "25", 25, progressive, png, silent},
    {"greek-sunset-2k.mp4", "Ηλιοβασίλεμα στο Αιγαίο", "sunset aegean sea greece ελλάδα", 9900, sunset,
     "hue=h=8", 2048, 1080, "24", 144, progressive, h264High, wind},
    {"tokyo-evening-4k.mp4", "東京の夕日", "sunset tokyo japan city 夕焼け", 10000, city, "hue=h=290", 3840,
     2160, "30000/1001", 45, progressive, h264HighQuick, silent},
    {"desert-evening-4k.mp4", "غروب الشمس في الصحراء", "sunset desert صحراء", 12500, sunset, "hue=h=-8", 3840,
     2160, "25", 50, progressive, h264HighQuick, wind},
    {"aurora-4k.mp4", "Aurora over the fjord, 4k", "aurora northern lights norway", 14900, aurora, "hue=h=30",
     3840, 2160, "60", 60, progressive, h264HighQuick, silent},
    {"cinema-hills-4k.mp4", "Layered hills in haze", "hills mountains landscape cinema", 19900, hills,
     "hue=h=25", 4096, 2160, "24", 48, progressive, h264HighQuick, silent},
    {"cinema-sunset-4k.mov", "Sunset master, cinema frame", "sunset sea cinema master", 24900, sunset,
     untinted, 4096, 2160, "24", 12, progressive, proresLt, silent},
    {"party-waves.mp4", "🌅 Good morning waves 🌊", "emoji sunrise party loop vertical", 700, gradient,
     "hue=h=-60", 720, 1280, "30", 330, progressive, h264High, chord},
    {"long-evening-360.mp4", "The long evening", "sunset slow background", 100, gradient, "hue=h=-20", 640,
     360, "25", 1525, progressive, h264Main, chord},
};

} // namespace

std::span<DemoClip const> demoClips() {
    return clips;
}

} // namespace tarn7d
