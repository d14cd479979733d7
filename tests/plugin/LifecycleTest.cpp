// Attach, load, unload and detach of the module, with every failure driven.

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "host/modules/PluginEntry.h"
#include "plugin/ModuleNotification.h"
#include "plugin/Tarn7ZQD.h"
#include "tarn7/Tarn7Resource.h"
#include "tests/fake_host/FakeHost.h"
#include "tests/plugin/FakePlatform.h"

extern "C" std::uint8_t zqPluginInstance(ZqPluginBase** plugin);

namespace {

using Zq::ModuleReason;

class Lifecycle : public testing::Test {
protected:
    Lifecycle() { platform.reset(); }
    ~Lifecycle() override {
        if (attached) {
            moduleNotification(ModuleReason::processDetach);
        }
        platform.reset();
    }

    bool attach() { return attached = moduleNotification(ModuleReason::processAttach); }
    void detach() {
        moduleNotification(ModuleReason::processDetach);
        attached = false;
    }
    static ZqPluginBase* plugin() {
        ZqPluginBase* instance = nullptr;
        zqPluginInstance(&instance);
        return instance;
    }
    static std::uint8_t loadedByte() {
        ZqPluginBase* instance = nullptr;
        return zqPluginInstance(&instance);
    }

    fake::Host host;
    fake::Platform& platform = fake::Platform::instance();
    bool attached = false;
};

// Counts the calls of closedown by what it destroys.
class CountingPlugin : public Tarn7ZQD {
public:
    class Component final : public ZqComponentBase {
    public:
        explicit Component(int& ended) : ended_(ended) {}
        ~Component() override { ++ended_; }

    private:
        int& ended_;
    };
    void add(ZqComponentBase* component) { registerComponent(component); }
};

TEST_F(Lifecycle, TheEntryGivesNothingBeforeTheModuleIsAttached) {
    ZqPluginBase* instance = reinterpret_cast<ZqPluginBase*>(this);
    EXPECT_EQ(zqPluginInstance(&instance), 0);
    EXPECT_EQ(instance, nullptr);
}

TEST_F(Lifecycle, TheEntryGivesTheObjectAndZeroBeforeLoadingIsComplete) {
    ASSERT_TRUE(attach());
    EXPECT_NE(plugin(), nullptr);
    EXPECT_EQ(loadedByte(), 0);
    EXPECT_EQ(plugin(), plugin()) << "it makes nothing";
}

TEST_F(Lifecycle, TheEntryReturnsOneAfterLoading) {
    ASSERT_TRUE(attach());
    plugin()->postLoadInitialization();
    EXPECT_EQ(loadedByte(), 1);
}

TEST_F(Lifecycle, ThePluginNamesItselfAndItsVersion) {
    ASSERT_TRUE(attach());
    EXPECT_EQ(plugin()->getName(), "Tarn7");
    EXPECT_EQ(plugin()->getVersion(), "14.7.2.0");
    EXPECT_EQ(plugin()->getCategory(), PluginCategory::deviceDriver);
    EXPECT_EQ(static_cast<int>(plugin()->getCategory()), 1);
}

TEST_F(Lifecycle, ExactlyOneRepositoryIsRegistered) {
    ASSERT_TRUE(attach());
    EXPECT_TRUE(plugin()->getComponents().empty()) << "the constructor makes none";
    plugin()->postLoadInitialization();
    ASSERT_EQ(plugin()->getComponents().size(), 1U);
    auto* const repository = dynamic_cast<iMediaFileRepository*>(plugin()->getComponents().front());
    ASSERT_NE(repository, nullptr);
    EXPECT_EQ(repository->getShortName(), L"T7");
    auto const* const resource = dynamic_cast<ZqResourceTypeBase*>(plugin()->getComponents().front());
    ASSERT_NE(resource, nullptr);
    EXPECT_EQ(static_cast<int>(resource->getResourceType()), 26);
    EXPECT_EQ(resource->getResourceName(), "Tarn7");
    std::uint32_t const tag = resource->getResourceTag();
    EXPECT_EQ(std::string(reinterpret_cast<char const*>(&tag), 4), "TRN7");
}

TEST_F(Lifecycle, LoadingNeitherConnectsNorSignsIn) {
    ASSERT_TRUE(attach());
    plugin()->postLoadInitialization();
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.network.connections().empty());
}

TEST_F(Lifecycle, AKeyOfZeroLeavesThePluginLoadedWithoutARepository) {
    host.configuration.values["t7"] = 0;
    ASSERT_TRUE(attach());
    plugin()->postLoadInitialization();
    EXPECT_EQ(loadedByte(), 1);
    EXPECT_TRUE(plugin()->getComponents().empty());
    EXPECT_EQ(host.files.providers.size(), 0U) << "no repository was constructed";
    plugin()->preUnloadDeinitialization();
    EXPECT_EQ(loadedByte(), 0);
}

TEST_F(Lifecycle, UnloadingClosesDownWithoutARepositoryToo) {
    host.configuration.values["t7"] = 0;
    int ended = 0;
    CountingPlugin tested;
    tested.postLoadInitialization();
    ASSERT_TRUE(tested.getComponents().empty());
    tested.add(new CountingPlugin::Component(ended));
    tested.preUnloadDeinitialization();
    EXPECT_EQ(ended, 1);
}

TEST_F(Lifecycle, AnyOtherValueOfTheKeyEnablesTheRepository) {
    for (std::int32_t const value : {1, -1, 2, -2147483647}) {
        host.configuration.values["t7"] = value;
        ASSERT_TRUE(attach());
        plugin()->postLoadInitialization();
        EXPECT_EQ(plugin()->getComponents().size(), 1U) << value;
        plugin()->preUnloadDeinitialization();
        detach();
    }
}

TEST_F(Lifecycle, OnlyOneConfigurationKeyIsAsked) {
    ASSERT_TRUE(attach());
    plugin()->postLoadInitialization();
    EXPECT_EQ(host.configuration.asked, std::vector<std::string>{"t7"});
}

TEST_F(Lifecycle, UnloadingDestroysTheRepositoryAndSendsNothing) {
    ASSERT_TRUE(attach());
    plugin()->postLoadInitialization();
    ASSERT_EQ(host.files.providers.size(), 1U);
    plugin()->preUnloadDeinitialization();
    EXPECT_TRUE(plugin()->getComponents().empty());
    EXPECT_EQ(host.files.providers.size(), 0U) << "the file layer has forgotten it";
    EXPECT_EQ(loadedByte(), 0);
    EXPECT_NE(plugin(), nullptr) << "the plug-in outlives its repository";
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Lifecycle, UnloadingTwiceClosesDownOnce) {
    int ended = 0;
    CountingPlugin tested;
    tested.postLoadInitialization();
    tested.add(new CountingPlugin::Component(ended));
    tested.preUnloadDeinitialization();
    EXPECT_EQ(ended, 1);
    tested.add(new CountingPlugin::Component(ended));
    tested.preUnloadDeinitialization();
    EXPECT_EQ(ended, 1) << "the second call does nothing";
}

TEST_F(Lifecycle, UnloadingWithoutLoadingDoesNothing) {
    int ended = 0;
    {
        CountingPlugin tested;
        tested.add(new CountingPlugin::Component(ended));
        tested.preUnloadDeinitialization();
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 1) << "the plug-in's end frees what is left";
}

TEST_F(Lifecycle, ANullComponentIsLeftOutOfTheList) {
    CountingPlugin tested;
    tested.add(nullptr);
    EXPECT_TRUE(tested.getComponents().empty());
}

TEST_F(Lifecycle, AnExceptionOutOfClosingDownIsLoggedAndGoesNoFurther) {
    int ended = 0;
    CountingPlugin tested;
    tested.postLoadInitialization();
    tested.add(new CountingPlugin::Component(ended));
    host.files.throwOnForgetting = true;
    EXPECT_NO_THROW(tested.preUnloadDeinitialization());
    EXPECT_EQ(host.log.lines(), std::vector<std::string>{"Tarn7ZQD : Exception freeing resources"});
    EXPECT_EQ(tested.isLoaded(), 0);
    EXPECT_EQ(ended, 1) << "the component is freed all the same";
}

TEST_F(Lifecycle, WithoutAThreadSlotTheLoadIsRefusedAndNothingIsMade) {
    platform.refuseSlot = true;
    EXPECT_FALSE(attach());
    EXPECT_EQ(plugin(), nullptr);
    EXPECT_EQ(platform.liveBlocks(), 0U);
}

TEST_F(Lifecycle, WithoutMemoryForThePluginTheLoadSucceedsAndOffersNothing) {
    host.memory.refuseSize(sizeof(Tarn7ZQD));
    ASSERT_TRUE(attach());
    EXPECT_EQ(plugin(), nullptr);
    EXPECT_EQ(loadedByte(), 0);
    EXPECT_EQ(platform.liveBlocks(), 1U) << "the thread has its block";
    host.memory.refuseSize(0);
    detach();
    EXPECT_EQ(platform.liveBlocks(), 0U);
}

TEST_F(Lifecycle, WithoutMemoryForTheThreadBlockTheSlotStaysEmpty) {
    platform.refuseBlocks = true;
    ASSERT_TRUE(attach());
    EXPECT_NE(plugin(), nullptr);
    EXPECT_EQ(platform.liveBlocks(), 0U);
    EXPECT_EQ(platform.getSlot(), nullptr);
    EXPECT_TRUE(moduleNotification(ModuleReason::threadAttach));
    EXPECT_TRUE(moduleNotification(ModuleReason::threadDetach));
}

TEST_F(Lifecycle, WithoutMemoryForTheRepositoryThePluginIsLoadedAndOffersNone) {
    ASSERT_TRUE(attach());
    host.memory.refuseSize(sizeof(Tarn7Resource));
    plugin()->postLoadInitialization();
    EXPECT_TRUE(plugin()->getComponents().empty());
    EXPECT_EQ(loadedByte(), 1);
    host.memory.refuseSize(0);
    plugin()->preUnloadDeinitialization();
}

class ThrowingSecurity final : public iSecurity {
public:
    Zq::Ptr<iHash> getHash() override { throw std::runtime_error("no hash"); }
};

TEST_F(Lifecycle, AnExceptionOfTheRepositorysConstructorPassesOnAndFreesItsMemory) {
    ASSERT_TRUE(attach());
    ThrowingSecurity security;
    HostServices services = installedHost();
    services.security = &security;
    HostServices const before = installHost(services);
    long const live = host.memory.liveAllocations();
    EXPECT_THROW(plugin()->postLoadInitialization(), std::runtime_error);
    EXPECT_EQ(host.memory.liveAllocations(), live);
    installHost(before);
    EXPECT_EQ(loadedByte(), 1) << "loading is marked before anything else";
    EXPECT_TRUE(plugin()->getComponents().empty());
    plugin()->preUnloadDeinitialization();
}

TEST_F(Lifecycle, EachThreadHasAZeroedBlockOf64BytesUntilItEnds) {
    ASSERT_TRUE(attach());
    EXPECT_EQ(platform.lastBlockBytes(), 64U);
    EXPECT_EQ(platform.liveBlocks(), 1U);
    std::thread([this] {
        EXPECT_TRUE(moduleNotification(ModuleReason::threadAttach));
        EXPECT_EQ(platform.liveBlocks(), 2U);
        auto const* const block = static_cast<unsigned char const*>(platform.getSlot());
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(std::all_of(block, block + 64, [](unsigned char byte) { return byte == 0; }));
        EXPECT_TRUE(moduleNotification(ModuleReason::threadDetach));
        EXPECT_EQ(platform.getSlot(), nullptr);
    }).join();
    EXPECT_EQ(platform.liveBlocks(), 1U);
}

TEST_F(Lifecycle, AThreadThatIsOlderThanTheModuleDetachesWithoutABlock) {
    ASSERT_TRUE(attach());
    std::thread([] { EXPECT_TRUE(moduleNotification(ModuleReason::threadDetach)); }).join();
    EXPECT_EQ(platform.liveBlocks(), 1U);
}

TEST_F(Lifecycle, AttachingAgainKeepsThePluginThatIsThere) {
    ASSERT_TRUE(attach());
    ZqPluginBase* const first = plugin();
    platform.setSlot(nullptr); // the block of the first attach is freed by reset
    ASSERT_TRUE(attach());
    EXPECT_EQ(plugin(), first);
}

TEST_F(Lifecycle, DetachingFreesThePluginTheBlockAndTheSlot) {
    long const live = host.memory.liveAllocations();
    ASSERT_TRUE(attach());
    plugin()->postLoadInitialization();
    detach(); // a host that forgets to unload first
    EXPECT_EQ(plugin(), nullptr);
    EXPECT_EQ(platform.liveBlocks(), 0U);
    EXPECT_FALSE(platform.slotAllocated());
    EXPECT_EQ(host.files.providers.size(), 0U) << "the plug-in's destructor has freed the repository";
    EXPECT_EQ(host.memory.liveAllocations(), live);
}

TEST_F(Lifecycle, AnyOtherReasonIsAnsweredWithTrueAndDoesNothing) {
    ASSERT_TRUE(attach());
    std::size_t const blocks = platform.liveBlocks();
    EXPECT_TRUE(moduleNotification(static_cast<ModuleReason>(4)));
    EXPECT_TRUE(moduleNotification(static_cast<ModuleReason>(0xffffffff)));
    EXPECT_EQ(platform.liveBlocks(), blocks);
}

TEST_F(Lifecycle, EnablingAndDisablingIsTheBases) {
    ASSERT_TRUE(attach());
    EXPECT_TRUE(plugin()->isEnabled());
    plugin()->disable();
    EXPECT_FALSE(plugin()->isEnabled());
    plugin()->enable();
    EXPECT_TRUE(plugin()->isEnabled());
    plugin()->postEnumerationInitialization();
    EXPECT_EQ(loadedByte(), 0);
}

} // namespace
