// Peak memory of a page of 1,000 clips, from the bytes of the answer to the finished results, against the size of
// the answer. Every allocation is counted, the host's and the language's.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <malloc.h>

#include "bench/AnswerSample.h"
#include "bench/BenchHost.h"

namespace {

std::atomic<std::size_t> live{0};
std::atomic<std::size_t> peak{0};

void* countedAllocation(std::size_t size) noexcept {
    void* const memory = std::malloc(size);
    if (memory != nullptr) {
        std::size_t const now = live.fetch_add(malloc_usable_size(memory)) + malloc_usable_size(memory);
        std::size_t highest = peak.load();
        while (now > highest && !peak.compare_exchange_weak(highest, now)) {
        }
    }
    return memory;
}

void countedFree(void* memory) noexcept {
    if (memory != nullptr) {
        live.fetch_sub(malloc_usable_size(memory));
        std::free(memory);
    }
}

class CountedMemory final : public iMemory {
public:
    void* allocate(std::size_t size) noexcept override { return countedAllocation(size); }
    void free(void* memory) noexcept override { countedFree(memory); }
};

} // namespace

void* operator new(std::size_t size) {
    void* const memory = countedAllocation(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void operator delete(void* memory) noexcept { countedFree(memory); }
void operator delete(void* memory, std::size_t) noexcept { countedFree(memory); }

int main() {
    CountedMemory memory;
    bench::Host const host(&memory);
    std::string const answer = bench::searchAnswer(1000);
    bench::Resource resource(Zq::makeShared<bench::Server>(Zq::makeShared<bench::Answer>(answer)));
    SearchQuery query;
    query.words = L"sunset";
    query.pageSize = 1000;

    std::size_t const before = live;
    peak = before;
    SearchResults const page = resource.searchInternal(query);
    double const size = static_cast<double>(answer.size());
    std::printf("\n%-48s %10zu bytes\n", "answer of 1000 clips", answer.size());
    std::printf("%-48s %10.3f\n", "peak memory of its results / the answer",
                static_cast<double>(peak - before) / size);
    std::printf("%-48s %10.3f\n", "memory that the results keep / the answer",
                static_cast<double>(live - before) / size);
    return page.assets.size() == 1000 ? 0 : 1;
}
