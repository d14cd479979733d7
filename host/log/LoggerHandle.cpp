#include "host/log/LoggerHandle.h"

#include "host/text/oneLine.h"

LoggerBase::~LoggerBase() = default;

void LoggerHandle::write(WideString const& text, LoggerBase::eOutputType type) const {
    if (log_) {
        log_->write(Zq::onOneLine(text), type);
    }
}
