// The host's log.
#pragma once

#include <string_view>

#include "host/object/Api.h"

// What stands behind the door. Thread: any.
class ZQ_API iLogSink {
public:
    virtual ~iLogSink();
    // One line, UTF-8, without a line break or another control character.
    virtual void write(std::string_view line) = 0;
};

// Writes a line to the host's log, with the conventions of printf. A trailing line break is dropped; other
// control characters in the values are written as escapes, so that a value never starts a line of its own. A
// line is cut at 4096 bytes. Thread: any.
ZQ_API void Log(char const* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;
