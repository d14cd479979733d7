// The log that a person follows during an import or a download.
#pragma once

#include <cstdint>

#include "host/object/Ptr.h"
#include "host/text/LightweightString.h"

// One import log. Thread: the one of the operation that it was made for.
class ZQ_API LoggerBase : public virtual iObject {
public:
    enum eOutputType : std::int32_t {
        ePlain = 0,
        eTransferStarts = 3,
        eTransferFailed = 4,
    };

    ~LoggerBase() override;
    virtual void write(WideString const& text, eOutputType type) = 0;
    virtual void incIndent() = 0;
    virtual void decIndent() = 0;
    // A fraction from 0 to 1 of the running transfer.
    virtual void reportProgress(double fraction, WideString const& text) = 0;
};

// A handle on a log; copies lead to the same log. A handle without a log swallows what it is told. Passed by
// value, it is released by the operation that takes it.
class LoggerHandle {
public:
    LoggerHandle() = default;
    explicit LoggerHandle(Zq::Ptr<LoggerBase> log) : log_(std::move(log)) {}

    // One line, whatever the text holds: names of clips come from a service, and one that breaks lines could
    // pass for the host. Control characters and line separators become blanks.
    ZQ_API void write(WideString const& text, LoggerBase::eOutputType type) const;
    void incIndent() const {
        if (log_) {
            log_->incIndent();
        }
    }
    void decIndent() const {
        if (log_) {
            log_->decIndent();
        }
    }
    void reportProgress(double fraction, WideString const& text) const {
        if (log_) {
            log_->reportProgress(fraction, text);
        }
    }

private:
    Zq::Ptr<LoggerBase> log_;
};
