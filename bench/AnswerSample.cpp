#include "bench/AnswerSample.h"

#include <array>
#include <cstdio>
#include <iterator>

namespace bench {

namespace {

struct Variant {
    char const* title;
    char const* codec;
    char const* rate;
    char const* coarseRate;
    int standard;
    int width;
    int height;
    char const* sound;
};

constexpr Variant variants[] = {
    {"Sunset over the harbour, boats at anchor", "H.264 (high, avc1)", "29.97", "30", 4, 1920, 1080, "PCM"},
    {"Aerial view of a winding mountain road", "Apple ProRes 422 (hq)", "23.976", "24", 6, 3840, 2160,
     "no snd"},
    {"Caf\\u00e9 terrace in the rain \\u2014 slow motion", "PhotoJPEG", "25", "25", 3, 720, 576, "AAC"},
    {"\\u6771\\u4eac\\u306e\\u591c\\u666f", "Avid DNxHD", "59.94", "60", 5, 1280, 720, "no snd"},
};

std::string item(std::size_t number) {
    Variant const& variant = variants[number % std::size(variants)];
    char text[1200];
    int const size = std::snprintf(
        text, sizeof text,
        R"({"id":%zu,"n":"%s","pr":"%zu","dur":"%zu","fps":"%s","fps_real":"%s","vs":%d,"ox":%d,"oy":%d,)"
        R"("ar":"%s","codg":"%s","coda":"%s","artist":{"id":%zu,"name":"Studio %zu","country":"NL"},)"
        R"("desc":"Royalty-free clip, shot on a quiet evening; suitable for titles, backgrounds and trailers.",)"
        R"("kw":"sunset,evening,calm,water,light,travel,background,slow","model_release":true,"exclusive":false,)"
        R"("uploaded":"2021-03-%02zuT10:00:00Z","size_mb":%zu.5,"rating":4.%zu,"views":%zu,"downloads":%zu,)"
        R"("tags":["nature","city","people"],"versions":[{"t":"web","w":480,"h":270},{"t":"hd","w":%d,"h":%d}],)"
        R"("license":"standard","editorial":false,"color":"#e0a060","thumb":null})",
        number + 1, variant.title, 5 + number % 120, 1000 + number * 37 % 90000, variant.coarseRate,
        variant.rate, variant.standard, variant.width, variant.height, number % 3 == 0 ? "4:3" : "16:9",
        variant.codec, variant.sound, number % 97, number % 97, 1 + number % 28, 20 + number % 900,
        number % 10, number * 13 % 10000, number * 7 % 500, variant.width, variant.height);
    return std::string(text, static_cast<std::size_t>(size));
}

} // namespace

std::string searchAnswer(std::size_t items) {
    std::string answer = R"({"e":false,"s":"","commands":[{"e":false,"s":"","tot_nbr_rows":)" +
                         std::to_string(items * 3) +
                         R"(,"icon_base":"https://www.tarn7.example/media/icons/",)"
                         R"("flv_base":"https://www.tarn7.example/media/previews/","items":[)";
    for (std::size_t i = 0; i < items; ++i) {
        answer += i != 0 ? "," : "";
        answer += item(i);
    }
    return answer + "]}]}";
}

} // namespace bench
