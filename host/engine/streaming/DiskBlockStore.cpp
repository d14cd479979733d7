#include "host/engine/streaming/DiskBlockStore.h"

#include <array>
#include <bit>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/engine/streaming/Crc32c.h"

namespace engine {

namespace {

using Word = std::uint32_t; // 0: absent
constexpr int mostTries = 8;

off_t placeOfWord(std::uint64_t block) {
    return static_cast<off_t>(StoreHeader::size_bytes + block * sizeof(Word));
}

Word wordOf(std::string_view bytes) {
    Word const crc = crc32c(bytes);
    return crc != 0 ? crc : 1;
}

// Bytes read; fewer at the end of the file or on an error.
std::size_t readAt(int file, void* bytes, std::size_t size, std::uint64_t place) {
    std::size_t filled = 0;
    while (filled < size) {
        ssize_t const count = ::pread(file, static_cast<char*>(bytes) + filled, size - filled,
                                      static_cast<off_t>(place + filled));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    return filled;
}

bool writeAt(int file, void const* bytes, std::size_t size, off_t place) {
    auto const* next = static_cast<char const*>(bytes);
    while (size > 0) {
        ssize_t const count = ::pwrite(file, next, size, place);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        next += count;
        size -= static_cast<std::size_t>(count);
        place += count;
    }
    return true;
}

FileDescriptor openRegular(std::filesystem::path const& path, int flags) {
    FileDescriptor file(::open(path.c_str(), flags | O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0644));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    return file;
}

std::optional<StoreHeader> headerIn(FileDescriptor const& index) {
    std::string bytes(StoreHeader::size_bytes, '\0');
    bytes.resize(readAt(index.get(), bytes.data(), bytes.size(), 0));
    return StoreHeader::decode(bytes);
}

// False also when the name stands for another file by now.
bool isStillNamed(FileDescriptor const& file, std::filesystem::path const& path) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(file.get(), &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

} // namespace

std::filesystem::path DiskBlockStore::indexOf(std::filesystem::path const& path) {
    return std::filesystem::path(path).concat(".idx");
}

std::unique_ptr<DiskBlockStore> DiskBlockStore::open(std::filesystem::path const& path) {
    std::filesystem::path const indexPath = indexOf(path);
    for (int attempt = 0; attempt < mostTries; ++attempt) {
        FileDescriptor index = openRegular(indexPath, O_CREAT);
        if (!index || ::flock(index.get(), LOCK_EX | LOCK_NB) != 0) {
            return nullptr;
        }
        // Whoever held the lock may have removed the file between the two steps.
        if (!isStillNamed(index, indexPath)) {
            continue;
        }
        // The blocks have a lock of their own: an index that somebody removed leaves its lock with its holder
        // alone, and what that one reads must not be written over.
        FileDescriptor data = openRegular(path, O_CREAT);
        if (!data || ::flock(data.get(), LOCK_EX | LOCK_NB) != 0) {
            return nullptr;
        }
        return std::make_unique<DiskBlockStore>(std::move(data), std::move(index));
    }
    return nullptr;
}

bool DiskBlockStore::remove(std::filesystem::path const& path) {
    std::filesystem::path const indexPath = indexOf(path);
    FileDescriptor const index = openRegular(indexPath, 0);
    if (!index) {
        return ::access(indexPath.c_str(), F_OK) != 0 && (::unlink(path.c_str()) == 0 || errno == ENOENT);
    }
    if (::flock(index.get(), LOCK_EX | LOCK_NB) != 0 || !isStillNamed(index, indexPath)) {
        return false;
    }
    // The index last: blocks without one are nothing, and the lock is on it.
    return (::unlink(path.c_str()) == 0 || errno == ENOENT) && ::unlink(indexPath.c_str()) == 0;
}

std::optional<StoreHeader> DiskBlockStore::header() const {
    return headerIn(index_);
}

bool DiskBlockStore::isStore(std::filesystem::path const& path) {
    FileDescriptor const index = openRegular(indexOf(path), 0);
    return index && headerIn(index).has_value();
}

void DiskBlockStore::keep(StoreHeader const& header) {
    std::lock_guard const lock(mutex_);
    total_bytes_ = header.content.total_bytes;
}

bool DiskBlockStore::reset(StoreHeader const& header) {
    std::lock_guard const lock(mutex_);
    ++epoch_;
    checked_.clear();
    total_bytes_ = 0;
    std::uint64_t const total = header.content.total_bytes;
    std::string const head = header.encode();
    // The words go before the blocks, and the head comes when nothing old is left.
    if (::ftruncate(index_.get(), 0) != 0 || ::ftruncate(data_.get(), 0) != 0 ||
        ::ftruncate(data_.get(), static_cast<off_t>(total)) != 0 ||
        ::ftruncate(index_.get(), placeOfWord(blocksIn(total))) != 0 ||
        !writeAt(index_.get(), head.data(), head.size(), 0)) {
        return false;
    }
    total_bytes_ = total;
    return true;
}

void DiskBlockStore::note(StoreHeader const& header) {
    std::lock_guard const lock(mutex_);
    std::string const head = header.encode();
    if (header.content.total_bytes == total_bytes_) {
        (void)writeAt(index_.get(), head.data(), head.size(), 0);
    }
}

bool DiskBlockStore::isSound(std::uint64_t block, std::uint64_t total) {
    std::uint64_t epoch = 0;
    {
        std::lock_guard const lock(mutex_);
        if (checked_.has(block)) {
            return true;
        }
        epoch = epoch_;
    }
    Word word = 0;
    if (readAt(index_.get(), &word, sizeof word, static_cast<std::uint64_t>(placeOfWord(block))) !=
            sizeof word ||
        word == 0) {
        return false;
    }
    ByteRange const range = bytesOfBlock(block, total);
    std::array<char, block_bytes> bytes;
    std::size_t const count =
        readAt(data_.get(), bytes.data(), static_cast<std::size_t>(range.size()), range.begin);
    bool const sound = count == range.size() && wordOf({bytes.data(), count}) == word;
    std::lock_guard const lock(mutex_);
    if (epoch != epoch_) {
        return false;
    }
    if (sound) {
        checked_.add(block);
    } else if (!checked_.has(block)) {
        Word const absent = 0;
        (void)writeAt(index_.get(), &absent, sizeof absent, placeOfWord(block));
    }
    return sound;
}

// Somebody has cut the file: what was checked before counts no more, and this block is gone.
void DiskBlockStore::distrust(std::uint64_t block) {
    std::lock_guard const lock(mutex_);
    Word const absent = 0;
    checked_.clear();
    (void)writeAt(index_.get(), &absent, sizeof absent, placeOfWord(block));
}

std::size_t DiskBlockStore::read(std::uint64_t position, std::span<char> out) {
    std::uint64_t total = 0;
    {
        std::lock_guard const lock(mutex_);
        total = total_bytes_;
    }
    if (position >= total) {
        return 0;
    }
    out = out.first(static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), total - position)));
    std::uint64_t end = position;
    while (end < position + out.size() && isSound(blockOf(end), total)) {
        end = bytesOfBlock(blockOf(end), total).end;
    }
    std::size_t const count = static_cast<std::size_t>(std::min(end, position + out.size()) - position);
    std::size_t const got = readAt(data_.get(), out.data(), count, position);
    if (got == count) {
        return count;
    }
    distrust(blockOf(position + got));
    return 0;
}

std::vector<bool> DiskBlockStore::presence(std::uint64_t first, std::size_t count) {
    std::vector<bool> present(count);
    {
        std::lock_guard const lock(mutex_);
        std::uint64_t const blocks = blocksIn(total_bytes_);
        count = first < blocks ? static_cast<std::size_t>(std::min<std::uint64_t>(count, blocks - first)) : 0;
    }
    std::vector<Word> words(count);
    (void)readAt(index_.get(), words.data(), count * sizeof(Word),
                 static_cast<std::uint64_t>(placeOfWord(first)));
    for (std::size_t i = 0; i < count; ++i) {
        present[i] = words[i] != 0;
    }
    return present;
}

bool DiskBlockStore::put(std::uint64_t block, std::string_view bytes) {
    std::lock_guard const lock(mutex_);
    ByteRange const range = bytesOfBlock(block, total_bytes_);
    if (range.size() != bytes.size()) {
        return false;
    }
    // A write behind the end of a file that somebody has cut would fill with zeros what was checked before.
    struct stat status {};
    if (::fstat(data_.get(), &status) != 0) {
        return false;
    }
    if (std::cmp_not_equal(status.st_size, total_bytes_)) {
        checked_.clear();
        if (::ftruncate(data_.get(), static_cast<off_t>(total_bytes_)) != 0) {
            return false;
        }
    }
    Word const word = wordOf(bytes);
    if (!writeAt(data_.get(), bytes.data(), bytes.size(), static_cast<off_t>(range.begin)) ||
        !writeAt(index_.get(), &word, sizeof word, placeOfWord(block))) {
        return false;
    }
    checked_.add(block);
    return true;
}

bool DiskBlockStore::isComplete() {
    std::uint64_t blocks = 0;
    {
        std::lock_guard const lock(mutex_);
        blocks = blocksIn(total_bytes_);
    }
    constexpr std::size_t step = 16'384;
    for (std::uint64_t first = 0; first < blocks; first += step) {
        std::size_t const count = static_cast<std::size_t>(std::min<std::uint64_t>(step, blocks - first));
        std::vector<bool> const present = presence(first, count);
        if (std::ranges::find(present, false) != present.end()) {
            return false;
        }
    }
    return true;
}

} // namespace engine
