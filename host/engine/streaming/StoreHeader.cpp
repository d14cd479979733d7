#include "host/engine/streaming/StoreHeader.h"

#include <utility>

#include "host/engine/streaming/ByteRange.h"
#include "host/engine/streaming/Crc32c.h"

namespace engine {

namespace {

constexpr std::string_view magic = "ZQPARTIA";
constexpr std::uint64_t version = 1;
constexpr std::size_t checksum_bytes = 8;
constexpr std::size_t longestName = 2048; // the identity tells longer names apart
constexpr std::uint64_t withoutRanges = 1;
constexpr std::uint64_t withIndexInFront = 2;

void add(std::string& out, std::uint64_t number) {
    for (unsigned shift = 0; shift < 64; shift += 8) {
        out += static_cast<char>((number >> shift) & 0xff);
    }
}

void add(std::string& out, std::string_view text) {
    add(out, text.size());
    out += text;
}

class Reader {
public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}
    [[nodiscard]] std::uint64_t number() {
        std::string_view const bytes = take(8);
        std::uint64_t value = 0;
        for (std::size_t i = bytes.size(); i-- > 0;) {
            value = value << 8 | static_cast<unsigned char>(bytes[i]);
        }
        return value;
    }
    [[nodiscard]] std::string text() { return std::string(take(number())); }
    [[nodiscard]] bool failed() const noexcept { return failed_; }

private:
    std::string_view take(std::uint64_t count) {
        failed_ = failed_ || count > rest_.size();
        std::string_view const taken = failed_ ? std::string_view() : rest_.substr(0, count);
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view rest_;
    bool failed_ = false;
};

} // namespace

std::string StoreHeader::encode() const {
    std::string out(magic);
    add(out, version);
    add(out, content.total_bytes);
    add(out, generation);
    add(out, static_cast<std::uint64_t>(validatedAt_s));
    add(out, (content.ranges ? 0 : withoutRanges) | (indexInFront ? withIndexInFront : 0));
    add(out, static_cast<std::uint64_t>(content.validator.kind));
    add(out, content.validator.text);
    add(out, identity);
    add(out, std::string_view(remoteName).substr(0, longestName));
    out.resize(size_bytes - checksum_bytes);
    add(out, crc32c(out));
    return out;
}

std::optional<StoreHeader> StoreHeader::decode(std::string_view bytes) {
    if (bytes.size() != size_bytes || !bytes.starts_with(magic) ||
        Reader(bytes.substr(size_bytes - checksum_bytes)).number() !=
            crc32c(bytes.substr(0, size_bytes - checksum_bytes))) {
        return std::nullopt;
    }
    Reader reader(bytes.substr(magic.size(), size_bytes - magic.size() - checksum_bytes));
    StoreHeader header;
    bool const known = reader.number() == version;
    header.content.total_bytes = reader.number();
    header.generation = reader.number();
    header.validatedAt_s = static_cast<std::int64_t>(reader.number());
    std::uint64_t const flags = reader.number();
    header.content.ranges = (flags & withoutRanges) == 0;
    header.indexInFront = (flags & withIndexInFront) != 0;
    std::uint64_t const kind = reader.number();
    header.content.validator.text = reader.text();
    header.identity = reader.text();
    header.remoteName = reader.text();
    if (!known || reader.failed() || kind > static_cast<std::uint64_t>(Validator::Kind::weakETag) ||
        header.content.total_bytes > largestFile_bytes) {
        return std::nullopt;
    }
    header.content.validator.kind = static_cast<Validator::Kind>(kind);
    // It goes into requests: what no server can have sent is not sent to one.
    Validator const& validator = header.content.validator;
    bool const isDate = validator.kind == Validator::Kind::lastModified;
    bool const canBe =
        isDate ? validatorOf({}, validator.text) == validator : validatorOf(validator.text, {}) == validator;
    return canBe ? std::optional(std::move(header)) : std::nullopt;
}

} // namespace engine
