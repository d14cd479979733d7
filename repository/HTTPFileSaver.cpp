#include "repository/HTTPFileSaver.h"

#include <utility>

#include "host/os/OS.h"
#include "host/tasks/BackgroundTaskQueueBase.h"

HTTPFileSaver::HTTPFileSaver(WideString destination, LoggerHandle log)
    : path(std::move(destination)), logger(std::move(log)) {}

HTTPFileSaver::~HTTPFileSaver() = default;

bool HTTPFileSaver::beginReceive(std::uint64_t totalLength) {
    totalBytes = totalLength;
    file = OS().fileManager().openForWrite(path, 2, 1, 0, 0);
    return static_cast<bool>(file);
}

bool HTTPFileSaver::receiveData(std::uint64_t, Zq::Ptr<iMemHolder> const& block) {
    if (BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling) {
        return false;
    }
    if (!file || !block || !file->write(block->getData(), static_cast<std::uint32_t>(block->getSize()))) {
        return false;
    }
    if (totalBytes == 0) {
        return true;
    }
    if (progress.function != nullptr) {
        progress.function(progress.context, file->getPosition(), totalBytes);
        return true;
    }
    logger.reportProgress(static_cast<double>(file->getPosition()) / static_cast<double>(totalBytes), {});
    return true;
}

void HTTPFileSaver::endReceive() {
    file.reset();
}
