// A second process for the tests of services that several processes share.
//
//   preference FILE KEY NUMBER   writes one preference
//   count FILE KEY TIMES         writes the numbers from 1 up under one key
//   download JOURNAL FILE        begins to write a file, says "open", and waits to be killed
//   cache FOLDER LIMIT PREFIX TIMES   stores that many entries of 1000 bytes
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

#include "host/engine/files/DiskCache.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/preferences/SqlitePreferences.h"
#include "host/text/Unicode.h"

namespace {

int writePreferences(std::vector<std::string> const& words) {
    engine::SqlitePreferences preferences(words[1]);
    int const number = std::atoi(words[3].c_str());
    for (int i = words[0] == "count" ? 1 : number; i <= number; ++i) {
        preferences.write(words[2].c_str(), i);
    }
    return 0;
}

int beginDownload(std::vector<std::string> const& words) {
    engine::LocalFileManager files(L"helper", words[1]);
    Zq::Ptr<iFile> const file = files.openForWrite(fromUTF8(std::string_view(words[2])), 2, 1, 0, 0);
    if (!file || !file->write("half", 4)) {
        return 1;
    }
    std::puts("open");
    std::fflush(stdout);
    for (;;) {
        ::pause();
    }
}

int fillCache(std::vector<std::string> const& words) {
    engine::DiskCache cache(words[1], std::strtoull(words[2].c_str(), nullptr, 10));
    std::string const bytes(1000, 'x');
    for (int i = 0; i < std::atoi(words[4].c_str()); ++i) {
        std::string const key = words[3] + std::to_string(i);
        if (cache.store(fromUTF8(std::string_view(key)), bytes.data(), bytes.size()).isEmpty()) {
            return 1;
        }
    }
    return 0;
}

} // namespace

int main(int count, char** values) {
    std::vector<std::string> const words(values + 1, values + count);
    if (words.size() == 4 && (words[0] == "preference" || words[0] == "count")) {
        return writePreferences(words);
    }
    if (words.size() == 3 && words[0] == "download") {
        return beginDownload(words);
    }
    if (words.size() == 5 && words[0] == "cache") {
        return fillCache(words);
    }
    return 2;
}
