// The doors to the installed host's edits.

#include "host/HostServices.h"
#include "host/edit/EditManager.h"
#include "host/edit/UIStateManager.h"

Edit::~Edit() = default;
Document::~Document() = default;
iEditStore::~iEditStore() = default;
iActionRecord::~iActionRecord() = default;

EditLabel editLabFrom(std::int64_t position, Zq::Image::ScanMode scan, Zq::FrameRate rate,
                      bool countsIn1001) noexcept {
    return {.position = position, .scanMode = scan, .frameRate = rate, .countsIn1001 = countsIn1001};
}

EditPtr EditPtr::i_open(Cookie const& cookie, std::int32_t) {
    iEditStore* const edits = installedHost().edits;
    return EditPtr(edits != nullptr ? edits->open(cookie) : Zq::Ptr<Edit>());
}

EditModifier EditManager::makeNewClip(std::uint8_t videoChannels, std::uint8_t audioChannels,
                                      double duration_s, Zq::FrameRate rate, Cookie const& cookie) {
    iEditStore* const edits = installedHost().edits;
    return edits != nullptr
               ? EditModifier(edits->makeNewClip(videoChannels, audioChannels, duration_s, rate, cookie))
               : EditModifier();
}

UIStateManager& UIStateManager::instance() {
    static UIStateManager manager;
    return manager;
}

void UIStateManager::recordAction(eUIActionType action) {
    if (iActionRecord* const actions = installedHost().actions) {
        actions->recordAction(action);
    }
}
