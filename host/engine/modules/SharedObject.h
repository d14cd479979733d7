// A shared object of the system, loaded while this value lives.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace engine {

// Thread: loader.
class SharedObject {
public:
    // Maps the file with all its symbols resolved and none of them given to others. Throws std::runtime_error
    // with the system's message where that fails.
    explicit SharedObject(std::filesystem::path const& file);

    // The address of an exported symbol; null when there is none.
    [[nodiscard]] void* symbol(char const* name) const noexcept;

private:
    struct Close {
        void operator()(void* handle) const noexcept;
    };
    std::unique_ptr<void, Close> handle_;
};

} // namespace engine
