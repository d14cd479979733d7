// Peak memory of a page of 1,000 clips, from the bytes of the answer to the finished results, against the
// size of the answer: what the process holds resident at its highest, by the kernel's own account.

#include <cstdio>
#include <fstream>
#include <string>

#include <malloc.h>

#include "bench/AnswerSample.h"
#include "bench/BenchHost.h"

namespace {

// A line of /proc/self/status, such as "VmHWM:", in bytes.
double residentBytes(std::string const& line) {
    std::ifstream status("/proc/self/status");
    std::string name;
    double kibibytes = 0;
    while (status >> name) {
        if (name == line && status >> kibibytes) {
            return kibibytes * 1024;
        }
        status.ignore(4096, '\n');
    }
    return 0;
}

// Gives unused memory back and makes the peak what is resident now.
void resetPeak() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
}

} // namespace

int main() {
    bench::Host const host;
    std::string const answer = bench::searchAnswer(1000);
    bench::Resource resource(Zq::makeShared<bench::Server>(Zq::makeShared<bench::Answer>(answer)));
    SearchQuery query;
    query.words = L"sunset";
    query.pageSize = 1000;
    (void)bench::Resource(Zq::Ptr<iHTTPServer>()).signedHash(L"the hash library loads itself on first use");

    resetPeak();
    double const before = residentBytes("VmRSS:");
    SearchResults const page = resource.searchInternal(query);
    double const peak = residentBytes("VmHWM:") - before;
    malloc_trim(0);
    double const kept = residentBytes("VmRSS:") - before;

    auto const size = static_cast<double>(answer.size());
    std::printf("\n%-48s %10zu bytes\n", "answer of 1000 clips", answer.size());
    std::printf("%-48s %10.3f\n", "peak memory of its results / the answer", peak / size);
    std::printf("%-48s %10.3f\n", "memory kept with the results / the answer", kept / size);
    return page.assets.size() == 1000 && peak > 0 ? 0 : 1;
}
