// The plug-in object of a module, as the host sees it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/modules/ZqComponentBase.h"
#include "host/text/LightweightString.h"

enum class PluginCategory : std::int32_t { deviceDriver = 1 };

// Thread: loader.
class ZQ_API ZqPluginBase : public HostAllocated {
public:
    ZqPluginBase(PluginCategory category, NarrowString version, NarrowString name);
    ZqPluginBase(ZqPluginBase const&) = delete;
    ZqPluginBase& operator=(ZqPluginBase const&) = delete;
    // Destroys what closedown has not.
    virtual ~ZqPluginBase();

    // Once after the module was loaded; marks the plug-in as loaded.
    virtual void postLoadInitialization();
    // Once after all modules were loaded.
    virtual void postEnumerationInitialization();
    // Before the module is unloaded; gives the components back to the host.
    virtual void preUnloadDeinitialization();
    virtual void enable();
    virtual void disable();

    [[nodiscard]] PluginCategory getCategory() const noexcept { return category_; }
    [[nodiscard]] NarrowString const& getVersion() const noexcept { return version_; }
    [[nodiscard]] NarrowString const& getName() const noexcept { return name_; }
    [[nodiscard]] bool isEnabled() const noexcept { return enabled_; }
    [[nodiscard]] std::uint8_t isLoaded() const noexcept { return loaded; }
    // The registered components, in the order of their registration; they stay the plug-in's.
    [[nodiscard]] std::span<ZqComponentBase* const> getComponents() const noexcept { return components_; }

protected:
    // Takes ownership of a component. Null is taken as "could not be made" and leaves the list as it is.
    void registerComponent(ZqComponentBase* component);
    // Destroys the components, last registered first, after the file layer has forgotten those that provide
    // files. An exception of the file layer passes on when all are destroyed.
    void closedown();

    std::uint8_t loaded = 0; // 1 from postLoadInitialization to preUnloadDeinitialization

private:
    PluginCategory category_;
    bool enabled_ = true;
    NarrowString version_;
    NarrowString name_;
    std::vector<ZqComponentBase*> components_;
};

// A plug-in that brings devices or services.
class ZQ_API ZqDeviceDriverBase : public ZqPluginBase {
public:
    using ZqPluginBase::ZqPluginBase;
    ~ZqDeviceDriverBase() override;
};
