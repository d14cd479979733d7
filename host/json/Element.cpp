#include "host/json/Element.h"

#include <algorithm>
#include <new>

#include "host/json/Tree.h"
#include "host/text/Numbers.h"
#include "host/text/Unicode.h"

namespace JSON {

namespace {

template <class Member>
Member const* find(std::span<Member const> members, std::string_view key) noexcept {
    auto const found = std::ranges::find(members, key, &Member::key);
    return found != members.end() ? &*found : nullptr;
}

} // namespace

template <class Member>
void MemberList<Member>::reserve(Arena& arena, std::uint32_t count) {
    if (count <= capacity_) {
        return;
    }
    auto* const fresh = static_cast<Member*>(arena.allocate(std::size_t{count} * sizeof(Member)));
    std::copy_n(members_, size_, fresh);
    members_ = fresh;
    capacity_ = count;
}

template <class Member>
void MemberList<Member>::append(Arena& arena, Member const& member) {
    if (size_ == capacity_) {
        reserve(arena, capacity_ != 0 ? 2 * capacity_ : 4);
    }
    ::new (static_cast<void*>(members_ + size_)) Member(member);
    ++size_;
}

Element::Element(Element const& other) : iVirtual(other), Zq::InternalRefCount(other), iObject(other) {
    for (StringMember const& member : other.strings()) {
        appendString(member.key, member.value);
    }
    for (NumberMember const& member : other.numbers()) {
        appendNumber(member.key, member.value);
    }
    for (FlagMember const& member : other.flags()) {
        appendFlag(member.key, member.value);
    }
    if (!other.children().empty()) {
        tree_ = other.tree_;
        own().tree = Zq::Ptr<Tree>(tree_);
        children_.reserve(own().arena, static_cast<std::uint32_t>(other.children().size()));
        for (ChildMember const& child : other.children()) {
            children_.append(own().arena, {own().arena.store(child.key), child.element});
        }
    }
}

Element::Element(Element&& other) noexcept : Element() {
    if (other.own_ == nullptr && other.tree_ != nullptr) {
        // The members belong to the tree and cannot be taken from it.
        Element copy(static_cast<Element const&>(other));
        swapMembers(copy);
    } else {
        swapMembers(other);
    }
}

Element& Element::operator=(Element other) noexcept {
    swapMembers(other);
    return *this;
}

void Element::swapMembers(Element& other) noexcept {
    std::swap(strings_, other.strings_);
    std::swap(numbers_, other.numbers_);
    std::swap(flags_, other.flags_);
    std::swap(children_, other.children_);
    std::swap(tree_, other.tree_);
    std::swap(own_, other.own_);
}

Element::~Element() = default;

Element::Own& Element::own() {
    if (own_ == nullptr) {
        own_.reset(new Own);
        if (own_ == nullptr) {
            throw std::bad_alloc();
        }
    }
    return *own_;
}

Zq::Ptr<Element> Element::share(Element* child) const noexcept {
    return Zq::Ptr<Element>(Zq::Ptr<Tree>(tree_), child);
}

Zq::Ptr<Element> Element::getChild(std::string_view key) const {
    ChildMember const* const child = find(children(), key);
    return child != nullptr ? share(child->element) : Zq::Ptr<Element>();
}

Zq::Ptr<Element> Element::getChild(std::uint16_t index) const {
    return index < children().size() ? share(children()[index].element) : Zq::Ptr<Element>();
}

std::uint16_t Element::getNumChildren() const noexcept {
    return static_cast<std::uint16_t>(std::min<std::size_t>(children().size(), 0xffff));
}

bool Element::getBool(std::string_view key, bool otherwise) const noexcept {
    FlagMember const* const flag = find(flags(), key);
    return flag != nullptr ? flag->value : otherwise;
}

std::int64_t Element::getInt(std::string_view key, std::int64_t otherwise) const noexcept {
    NumberMember const* const number = find(numbers(), key);
    return number != nullptr ? Zq::truncatedTo64Bits(number->value) : otherwise;
}

float Element::getFloat(std::string_view key, float otherwise) const noexcept {
    NumberMember const* const number = find(numbers(), key);
    return number != nullptr ? Zq::nearestFloat(number->value) : otherwise;
}

bool Element::hasNum(std::string_view key) const noexcept {
    return find(numbers(), key) != nullptr;
}

std::string_view Element::getStringView(std::string_view key) const noexcept {
    StringMember const* const string = find(strings(), key);
    return string != nullptr ? string->value : std::string_view();
}

NarrowString Element::getString(std::string_view key) const {
    return NarrowString(getStringView(key));
}

WideString Element::getWString(std::string_view key) const {
    return fromUTF8(getStringView(key));
}

void Element::appendString(std::string_view key, std::string_view value) {
    Arena& arena = own().arena;
    strings_.append(arena, {arena.store(key), arena.store(value)});
}

void Element::appendNumber(std::string_view key, double value) {
    Arena& arena = own().arena;
    numbers_.append(arena, {arena.store(key), value});
}

void Element::appendFlag(std::string_view key, bool value) {
    Arena& arena = own().arena;
    flags_.append(arena, {arena.store(key), value});
}

Element const& orEmpty(Zq::Ptr<Element> const& element) noexcept {
    static Element const empty;
    return element ? *element : empty;
}

void Tree::reserve(Element& element, Counts const& counts) {
    element.strings_.reserve(arena_, counts.strings);
    element.numbers_.reserve(arena_, counts.numbers);
    element.flags_.reserve(arena_, counts.flags);
    element.children_.reserve(arena_, counts.children);
}

void Tree::addString(Element& element, std::string_view key, std::string_view value) {
    element.strings_.append(arena_, {key, value});
}

void Tree::addNumber(Element& element, std::string_view key, double value) {
    element.numbers_.append(arena_, {key, value});
}

void Tree::addFlag(Element& element, std::string_view key, bool value) {
    element.flags_.append(arena_, {key, value});
}

Element& Tree::addChild(Element& element, std::string_view key) {
    auto* const child = new (arena_.allocate(sizeof(Element))) Element;
    child->tree_ = this;
    element.children_.append(arena_, {key, child});
    return *child;
}

} // namespace JSON
