// A column of the host's lists and logs: what it is called, how its values are kept, and who may change them.
// A value. Thread: any.
#pragma once

#include <cstdint>

#include "host/text/LightweightString.h"
#include "host/text/UIString.h"

namespace DBFieldTypes {

// How a value is kept. The numbers are those of the host's database.
enum eType : std::int32_t {
    text = 1,
    duration = 65,
};

} // namespace DBFieldTypes

class ZQ_API LogAttribute {
public:
    // The well-known attributes that the repositories use. Numbers from 1000 are custom.
    enum eType : std::int32_t {
        eName = 1,
        eSource = 6,
        eFrameRate = 18,
        eClipId = 23,
        eFormat = 45,
        ePrice = 59,
        eFirstCustom = 1000,
    };
    enum eFlags : std::uint32_t {
        eShown = 1,
        eEditable = 2, // by the user
    };

    // The well-known attribute of that type, editable; for an unknown type, one without a name.
    explicit LogAttribute(eType type);
    // A custom attribute. The key names its values where the host keeps them; `width` is the preferred width
    // of its column in pixels, where 1 leaves it to the screen.
    LogAttribute(UIString displayName, char const* key, DBFieldTypes::eType fieldType, std::uint32_t flags,
                 std::uint32_t width, eType type);

    [[nodiscard]] eType getType() const noexcept { return type_; }
    [[nodiscard]] UIString const& getDisplayName() const noexcept { return displayName_; }
    void setDisplayName(UIString name) { displayName_ = std::move(name); }
    [[nodiscard]] NarrowString const& getKey() const noexcept { return key_; }
    [[nodiscard]] DBFieldTypes::eType getFieldType() const noexcept { return fieldType_; }

    std::uint32_t flags = 0;
    std::uint32_t preferredWidth = 1;

private:
    UIString displayName_;
    NarrowString key_;
    DBFieldTypes::eType fieldType_ = DBFieldTypes::text;
    eType type_;
};
