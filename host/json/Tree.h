// The elements of one parsed answer, their members and their texts, owned together. A JSON reader builds one.
//
// Thread: one at a time while it is built; reading its elements, any.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "host/json/Element.h"

namespace JSON {

class ZQ_API Tree : public virtual iObject {
public:
    struct Counts {
        std::uint32_t strings = 0;
        std::uint32_t numbers = 0;
        std::uint32_t flags = 0;
        std::uint32_t children = 0;
    };

    Tree() noexcept { root_.tree_ = this; }
    Tree(Tree const&) = delete;
    Tree& operator=(Tree const&) = delete;

    [[nodiscard]] Element& root() noexcept { return root_; }
    [[nodiscard]] Arena& arena() noexcept { return arena_; }
    // Keeps texts that members point into for as long as the tree lives.
    void keepText(std::unique_ptr<std::uint8_t[]> text) noexcept { text_ = std::move(text); }

    // Makes room for the members of an element: exact counts make it one allocation a list.
    void reserve(Element& element, Counts const& counts);
    // The texts are not copied: they must lie in the arena or in what keepText was given.
    void addString(Element& element, std::string_view key, std::string_view value);
    void addNumber(Element& element, std::string_view key, double value);
    void addFlag(Element& element, std::string_view key, bool value);
    [[nodiscard]] Element& addChild(Element& element, std::string_view key);

    // The root, sharing ownership of the tree.
    [[nodiscard]] static Zq::Ptr<Element> rootOf(Zq::Ptr<Tree> const& tree) noexcept {
        return Zq::Ptr<Element>(tree, &tree->root_);
    }

private:
    Arena arena_;
    std::unique_ptr<std::uint8_t[]> text_;
    Element root_;
};

} // namespace JSON
