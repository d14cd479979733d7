// JSON::Element: an object or an array of a parsed JSON text, and the base of things that are written as one.
//
// The scalar members stand in three lists, strings, numbers and flags, each in the order of the text with
// duplicates kept; objects and arrays stand apart as children. null members are dropped. The items of an
// array are members with the empty key. A missing key is never an error: every accessor has a default.
//
// The elements of one answer live together in one tree (Tree.h); a Ptr to any of them keeps the whole answer
// alive. Such an element is never owned singly: make a Ptr to it only from a Ptr of its tree.
//
// Thread: reading, any; changing, one at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "host/json/Arena.h"
#include "host/object/HostAllocated.h"
#include "host/object/Ptr.h"
#include "host/text/LightweightString.h"

namespace JSON {

class Element;
class Tree;

// The texts of the members live as long as the element, and are UTF-8.
struct StringMember {
    std::string_view key;
    std::string_view value;
};
struct NumberMember {
    std::string_view key;
    double value;
};
struct FlagMember {
    std::string_view key;
    bool value;
};
struct ChildMember {
    std::string_view key;
    Element* element;
};

// A list of members whose storage belongs to an arena.
template <class Member>
class MemberList {
public:
    [[nodiscard]] std::span<Member const> all() const noexcept { return {members_, size_}; }
    // Room for `count` members in all.
    void reserve(Arena& arena, std::uint32_t count);
    void append(Arena& arena, Member const& member);

private:
    Member* members_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = 0;
};

class ZQ_API Element : public virtual iObject {
public:
    Element() noexcept = default;
    // A copy has lists of its own; it shares the children and keeps them alive.
    Element(Element const& other);
    // Leaves `other` without members, except where they belong to a tree: those are copied.
    Element(Element&& other) noexcept;
    Element& operator=(Element other) noexcept;
    ~Element() override;

    // The object or array of that key, null if there is none.
    [[nodiscard]] Zq::Ptr<Element> getChild(std::string_view key) const;
    // Child number `index` of an array, null behind the last.
    [[nodiscard]] Zq::Ptr<Element> getChild(std::uint16_t index) const;
    // Saturates at 65535.
    [[nodiscard]] std::uint16_t getNumChildren() const noexcept;

    [[nodiscard]] bool getBool(std::string_view key, bool otherwise) const noexcept;
    // The number truncated toward zero and clamped to 64 bits.
    [[nodiscard]] std::int64_t getInt(std::string_view key, std::int64_t otherwise) const noexcept;
    [[nodiscard]] float getFloat(std::string_view key, float otherwise) const noexcept;
    [[nodiscard]] bool hasNum(std::string_view key) const noexcept;
    // Empty if there is no string of that key.
    [[nodiscard]] NarrowString getString(std::string_view key) const;
    [[nodiscard]] WideString getWString(std::string_view key) const;
    // The same without a copy: valid as long as the element.
    [[nodiscard]] std::string_view getStringView(std::string_view key) const noexcept;

    [[nodiscard]] std::span<StringMember const> strings() const noexcept { return strings_.all(); }
    [[nodiscard]] std::span<NumberMember const> numbers() const noexcept { return numbers_.all(); }
    [[nodiscard]] std::span<FlagMember const> flags() const noexcept { return flags_.all(); }
    [[nodiscard]] std::span<ChildMember const> children() const noexcept { return children_.all(); }

protected:
    // Append a member, with a copy of its texts.
    void appendString(std::string_view key, std::string_view value);
    void appendNumber(std::string_view key, double value);
    void appendFlag(std::string_view key, bool value);

private:
    friend class Tree;

    // What an element that stands alone owns: the storage of its members, and the tree of its children.
    struct Own : HostAllocated {
        Arena arena;
        Zq::Ptr<Tree> tree;
    };
    [[nodiscard]] Own& own();
    void swapMembers(Element& other) noexcept;
    [[nodiscard]] Zq::Ptr<Element> share(Element* child) const noexcept;

    MemberList<StringMember> strings_;
    MemberList<NumberMember> numbers_;
    MemberList<FlagMember> flags_;
    MemberList<ChildMember> children_;
    Tree* tree_ = nullptr; // the tree that the children live in
    std::unique_ptr<Own> own_;
};

// The element, or an element without members where there is none: so accessors give their defaults.
[[nodiscard]] ZQ_API Element const& orEmpty(Zq::Ptr<Element> const& element) noexcept;

} // namespace JSON
