// The one place where objects of the program meet the host's memory: a class that derives from this mixin is
// allocated and freed by OS(), in whichever module the `new` stands.
#pragma once

#include <cstddef>

#include "host/object/Api.h"

class ZQ_API HostAllocated {
public:
    // Null when the host has no memory: the new-expression then gives null and runs no constructor.
    static void* operator new(std::size_t size) noexcept;
    static void operator delete(void* memory) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) noexcept {}
    static void* operator new[](std::size_t) = delete;
};
