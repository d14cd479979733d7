// A host in a second process that fetches one file and is killed on the way or afterwards.
//
//   JOURNAL FILE SERVER PATH   says "block" when the first block is in the file and "status N" when the fetch
//                              has ended; then waits to be killed
#include <cstdio>
#include <string_view>

#include <unistd.h>

#include "host/HostServices.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/text/Unicode.h"
#include "repository/HTTPFileSaver.h"

namespace {

class Saver final : public HTTPFileSaver {
public:
    using HTTPFileSaver::HTTPFileSaver;
    bool receiveData(std::uint64_t offset, Zq::Ptr<iMemHolder> const& block) override {
        bool const taken = HTTPFileSaver::receiveData(offset, block);
        if (offset == 0) {
            std::puts("block");
            std::fflush(stdout);
        }
        return taken;
    }
};

} // namespace

int main(int count, char** values) {
    if (count != 5) {
        return 2;
    }
    engine::LocalFileManager files(L"helper", values[1]);
    HostServices services;
    services.files = &files;
    installHost(services);
    engine::CurlNetwork network{engine::NetworkSettings()};
    HTTPConnectionInfo info;
    info.server = fromUTF8(std::string_view(values[3]));
    Zq::Ptr<iHTTPServer> const server = network.createHTTPServer(info);
    Saver saver(fromUTF8(std::string_view(values[2])), LoggerHandle());
    std::printf("status %d\n", server->httpGetToReceiver(fromUTF8(std::string_view(values[4])), saver));
    std::fflush(stdout);
    for (;;) {
        ::pause();
    }
}
