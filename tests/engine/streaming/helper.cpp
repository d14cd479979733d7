// A second process for the tests of streaming.
//
//   hold SERVER NAME CACHE        opens the file, says "open", and waits to be killed
//   read SERVER NAME CACHE SEED   reads at random places until it is killed
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

#include "host/engine/network/CurlNetwork.h"
#include "host/engine/streaming/StreamingFiles.h"
#include "host/text/Unicode.h"

int main(int count, char** values) {
    std::vector<std::string> const words(values + 1, values + count);
    if (words.size() < 4) {
        return 2;
    }
    engine::CurlNetwork network({});
    engine::StreamingFiles streams(words[3] + ".catalogue", std::uint64_t{1} << 30);
    HTTPConnectionInfo info;
    info.server = fromUTF8(std::string_view(words[1]));
    Zq::Ptr<StreamingFile> const file =
        streams.create(network.createHTTPServer(info), fromUTF8(std::string_view(words[2])), L"",
                       fromUTF8(std::string_view(words[3])));
    if (!file || file->getSize() == 0) {
        return 1;
    }
    if (words[0] == "hold") {
        std::puts("open");
        std::fflush(stdout);
        for (;;) {
            ::pause();
        }
    }
    std::mt19937_64 random(std::strtoull(words.back().c_str(), nullptr, 10));
    std::vector<char> buffer(200'000);
    for (;;) {
        if (!file->setPosition(random() % file->getSize()) ||
            file->read(buffer.data(), static_cast<std::uint32_t>(random() % buffer.size())) < 0) {
            return 1;
        }
    }
}
