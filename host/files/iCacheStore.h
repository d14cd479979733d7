// Things that were fetched once and can be fetched again, kept on disk within a bound, oldest use first out.
#pragma once

#include <cstddef>

#include "host/text/LightweightString.h"

class ZQ_API iCacheStore {
public:
    virtual ~iCacheStore();
    // Path of the entry that was stored under the key, which counts as used now; empty if there is none. The
    // key is any text, such as an address. Thread: any.
    [[nodiscard]] virtual WideString find(WideString const& key) = 0;
    // Stores the bytes, whole or not at all, and gives the path; empty when they could not be written.
    [[nodiscard]] virtual WideString store(WideString const& key, void const* bytes, std::size_t size) = 0;
    // Folder for files that are fetched part by part; exists and can be written, or the text is empty.
    [[nodiscard]] virtual WideString partialFolder() = 0;
};
