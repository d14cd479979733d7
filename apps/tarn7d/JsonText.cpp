#include "apps/tarn7d/JsonText.h"

#include <algorithm>
#include <limits>

#include "host/engine/json/SimdjsonReader.h"
#include "host/text/Unicode.h"

namespace tarn7d {

namespace {

// Bytes for the JSON reader, which works in wide steps and would copy a text without room behind it.
class PaddedBytes final : public iMemHolder {
public:
    explicit PaddedBytes(std::string_view bytes) : size_(bytes.size()) {
        storage_.reserve(bytes.size() + padding);
        storage_.append(bytes);
        storage_.append(padding, '\0');
    }
    [[nodiscard]] char const* getData() const noexcept override { return storage_.data(); }
    [[nodiscard]] std::size_t getSize() const noexcept override { return size_; }
    [[nodiscard]] std::size_t getPadding() const noexcept override { return padding; }

private:
    static constexpr std::size_t padding = 64;
    std::size_t size_;
    std::string storage_;
};

} // namespace

Zq::Ptr<JSON::Element> parseJson(std::string_view text) {
    engine::SimdjsonReader reader;
    return reader.parse(PaddedBytes(text));
}

std::string jsonText(JSON::Builder const& builder) {
    NarrowString const text = toUTF8(builder.getOutput());
    return std::string(text.view());
}

void addText(JSON::Builder& builder, char const* key, std::string_view text) {
    builder.add(key, fromUTF8(text), true);
}

void addInteger(JSON::Builder& builder, char const* key, std::int64_t value) {
    builder.add(
        key, static_cast<std::int32_t>(std::clamp<std::int64_t>(
                 value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max())));
}

} // namespace tarn7d
