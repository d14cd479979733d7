// Serves made-up files over HTTP and HTTPS until its input ends.
//
// usage: zq_bench_server FOLDER
// Says the two ports and the authority that is to be trusted, whose files it keeps in the folder.
#include <cstdio>
#include <cstdlib>
#include <exception>

#include <unistd.h>

#include "apps/tarn7d/CertificateAuthority.h"
#include "bench/FileServer.h"

int main(int count, char** arguments) {
    if (count != 2) {
        return 2;
    }
    try {
        tarn7d::CertificateFiles const files = tarn7d::ensureCertificates(arguments[1], {"127.0.0.1"});
        bench::FileServer const plain;
        bench::FileServer const secure(files.certificate, files.key);
        std::printf("%u %u %s\n", plain.port(), secure.port(), files.ca.c_str());
        std::fflush(stdout);
        char byte = 0;
        while (::read(STDIN_FILENO, &byte, 1) > 0) {
        }
        std::_Exit(0); // the servers' threads go on to the end
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
