#include "host/engine/modules/SharedObject.h"

#include <dlfcn.h>

#include <stdexcept>

namespace engine {

SharedObject::SharedObject(std::filesystem::path const& file)
    : handle_(::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) {
        char const* const reason = ::dlerror();
        throw std::runtime_error(reason != nullptr ? reason : "cannot be mapped");
    }
}

void* SharedObject::symbol(char const* name) const noexcept {
    return ::dlsym(handle_.get(), name);
}

void SharedObject::Close::operator()(void* handle) const noexcept {
    ::dlclose(handle);
}

} // namespace engine
