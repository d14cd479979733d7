#include "host/log/LoggerHandle.h"

LoggerBase::~LoggerBase() = default;
