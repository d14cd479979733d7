#include "host/engine/files/ReplacementFile.h"

#include <cstdio>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/engine/files/WholeFile.h"

namespace engine {

ReplacementFile::ReplacementFile(std::filesystem::path const& destination)
    : name_((destination.parent_path() / std::string(unfinishedPrefix).append("XXXXXX")).native()),
      file_(::mkostemp(name_.data(), O_CLOEXEC)) {}

ReplacementFile::~ReplacementFile() {
    if (file_) {
        ::unlink(name_.c_str());
    }
}

bool ReplacementFile::startAnew() const noexcept {
    return ::ftruncate(file_.get(), 0) == 0 && ::lseek(file_.get(), 0, SEEK_SET) == 0;
}

bool ReplacementFile::become(std::filesystem::path const& destination, bool overwrite) const noexcept {
    if (::fchmod(file_.get(), 0644) != 0 || ::fdatasync(file_.get()) != 0) {
        return false;
    }
    return overwrite ? ::rename(name_.c_str(), destination.c_str()) == 0
                     : ::link(name_.c_str(), destination.c_str()) == 0;
}

} // namespace engine
