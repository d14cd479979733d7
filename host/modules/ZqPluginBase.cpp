#include "host/modules/ZqPluginBase.h"

#include <exception>
#include <utility>

#include "host/HostServices.h"
#include "host/files/iFileManager.h"
#include "host/log/Log.h"

ZqPluginBase::ZqPluginBase(PluginCategory category, NarrowString version, NarrowString name)
    : category_(category), version_(std::move(version)), name_(std::move(name)) {}

ZqPluginBase::~ZqPluginBase() {
    try {
        closedown();
    } catch (...) {
        Log("%s : a component could not be freed", name_.c_str());
    }
}

void ZqPluginBase::postLoadInitialization() {
    loaded = 1;
}

void ZqPluginBase::postEnumerationInitialization() {}

void ZqPluginBase::preUnloadDeinitialization() {
    loaded = 0;
    closedown();
}

void ZqPluginBase::enable() {
    enabled_ = true;
}

void ZqPluginBase::disable() {
    enabled_ = false;
}

void ZqPluginBase::registerComponent(ZqComponentBase* component) {
    if (component != nullptr) {
        components_.push_back(component);
    }
}

void ZqPluginBase::closedown() {
    std::exception_ptr failure;
    while (!components_.empty()) {
        ZqComponentBase* const component = components_.back();
        components_.pop_back();
        // A resource registers its provider part by itself. It is forgotten while it is whole: others may
        // ask.
        if (iFileManager* const files = installedHost().files) {
            try {
                files->forgetProvidersOf(*component);
            } catch (...) {
                failure = std::current_exception();
            }
        }
        delete component;
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

ZqDeviceDriverBase::~ZqDeviceDriverBase() = default;
