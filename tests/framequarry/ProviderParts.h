// What FrameQuarryResource leaves to a class that takes it into use, each operation in a part of its own.
#pragma once

#include "framequarry/FrameQuarryResource.h"

namespace framequarry_tests {

template <class Base>
class Copying : public Base {
public:
    iFileManager::eCopyRC copyFile(WideString const&, WideString const&, bool,
                                   iFileManager::ProgressCallback) override {
        return iFileManager::eSourceNotOpened;
    }
};

template <class Base>
class MappingForReading : public Base {
public:
    [[nodiscard]] WideString mapPathForReading(WideString const& path) const override { return path; }
};

template <class Base>
class MappingForWriting : public Base {
public:
    [[nodiscard]] WideString mapPathForWriting(WideString const& path) const override { return path; }
};

} // namespace framequarry_tests
