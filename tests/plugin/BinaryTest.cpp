// The built module as a host meets it: what it exports, what it needs, and that it really leaves.

#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include <dlfcn.h>

#include "host/modules/ModuleThreads.h"
#include "host/modules/PluginEntry.h"
#include "host/modules/ZqPluginBase.h"
#include "repository/iMediaFileRepository.h"
#include "tests/fake_host/FakeHost.h"

namespace {

// Paths come from the build.
std::string const modulePath = ZQ_MODULE_PATH;

std::string outputOf(std::string const& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> const pipe(popen(command.c_str(), "r"), &pclose);
    std::string output;
    std::array<char, 4096> buffer{};
    while (pipe != nullptr && std::fgets(buffer.data(), buffer.size(), pipe.get()) != nullptr) {
        output += buffer.data();
    }
    return output;
}

bool isMapped(std::string const& fileName) {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (line.find(fileName) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// Mappings of files. Those without one belong to allocators, a sanitizer's among them, and come and go.
std::size_t fileMappings() {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    std::size_t count = 0;
    while (std::getline(maps, line)) {
        count += line.find('/') != std::string::npos ? 1U : 0U;
    }
    return count;
}

struct CloseModule {
    void operator()(void* module) const { dlclose(module); }
};
using Module = std::unique_ptr<void, CloseModule>;

Module open() {
    return Module(dlopen(modulePath.c_str(), RTLD_NOW | RTLD_LOCAL));
}

PluginEntry entryOf(Module const& module) {
    return reinterpret_cast<PluginEntry>(dlsym(module.get(), pluginEntryName));
}

TEST(Binary, ExportsOneSymbol) {
    std::istringstream symbols(outputOf("nm -D --defined-only '" + modulePath + "'"));
    std::set<std::string> names;
    std::string line;
    while (std::getline(symbols, line)) {
        names.insert(line.substr(line.rfind(' ') + 1));
    }
    EXPECT_EQ(names, std::set<std::string>{"zqPluginInstance"});
}

// The libraries that a binary names, without the language's runtime. The sanitizers' own runtime is a tool of
// the test build, not of the binary.
std::set<std::string> neededBy(std::string const& path) {
    static std::set<std::string> const runtime{"libstdc++.so.6", "libgcc_s.so.1", "libc.so.6",   "libm.so.6",
                                               "libasan.so.8",   "libubsan.so.1", "libtsan.so.2"};
    std::set<std::string> names;
    std::istringstream entries(outputOf("readelf -d '" + path + "'"));
    std::string line;
    bool seen = false;
    while (std::getline(entries, line)) {
        if (line.find("(NEEDED)") == std::string::npos) {
            continue;
        }
        seen = true;
        std::size_t const start = line.find('[') + 1;
        std::string const name = line.substr(start, line.find(']') - start);
        if (!runtime.contains(name)) {
            names.insert(name);
        }
    }
    EXPECT_TRUE(seen) << path << " cannot be read";
    return names;
}

TEST(Binary, NeedsTheHostLibraryAndTheRuntimeAlone) {
    EXPECT_EQ(neededBy(modulePath), std::set<std::string>{"libzqhost.so.0"});
}

TEST(Binary, TheHostLibraryNeedsTheRuntimeAlone) {
    EXPECT_EQ(neededBy(ZQ_HOST_LIBRARY_PATH), std::set<std::string>());
}

TEST(Binary, LoadsAsAnEditorLoadsIt) {
    fake::Host host;
    Module const module = open();
    ASSERT_NE(module, nullptr) << dlerror();
    PluginEntry const entry = entryOf(module);
    ASSERT_NE(entry, nullptr);
    ZqPluginBase* plugin = nullptr;
    EXPECT_EQ(entry(&plugin), 0);
    ASSERT_NE(plugin, nullptr);
    plugin->postLoadInitialization();
    EXPECT_EQ(entry(&plugin), 1);
    ASSERT_EQ(plugin->getComponents().size(), 1U);
    auto* const repository = dynamic_cast<iMediaFileRepository*>(plugin->getComponents().front());
    ASSERT_NE(repository, nullptr) << "the contract's types are one across the module's border";
    EXPECT_EQ(repository->getName(), L"Tarn7");
    plugin->preUnloadDeinitialization();
}

TEST(Binary, RegistersOneRepositoryWhichIsTarn7s) {
    fake::Host host;
    Module const module = open();
    ASSERT_NE(module, nullptr) << dlerror();
    ZqPluginBase* plugin = nullptr;
    ASSERT_EQ(entryOf(module)(&plugin), 0);
    ASSERT_NE(plugin, nullptr);
    plugin->postLoadInitialization();
    ASSERT_EQ(plugin->getComponents().size(), 1U);
    auto* const repository = dynamic_cast<iMediaFileRepository*>(plugin->getComponents().front());
    ASSERT_NE(repository, nullptr);
    EXPECT_EQ(repository->getShortName(), L"T7");
    ASSERT_EQ(host.files.providers.size(), 1U) << "a repository that nobody registers is not built either";
    EXPECT_EQ(host.files.providers.front()->getProviderName(), L"T7");
    EXPECT_EQ(host.files.findProvider(L"Virtual:FQ https://m.test/1.mp4"), nullptr);
    plugin->preUnloadDeinitialization();
}

// Whether the module holds the run-time record of the class of that name, as compilers encode it: a text of
// its own, not a part of a longer symbol. What stands before it is padding.
bool holdsClass(std::string const& encodedName) {
    std::ifstream file(modulePath, std::ios::binary);
    std::string const bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::string const text = encodedName + '\0';
    for (std::size_t at = bytes.find(text, 1); at != std::string::npos; at = bytes.find(text, at + 1)) {
        auto const before = static_cast<unsigned char>(bytes[at - 1]);
        if (std::isalnum(before) == 0 && before != '_') {
            return true;
        }
    }
    return false;
}

TEST(Binary, HoldsTheSecondRepositoryToo) {
    EXPECT_TRUE(holdsClass("13Tarn7Resource"));
    EXPECT_TRUE(holdsClass("19FrameQuarryResource"));
    EXPECT_FALSE(holdsClass("18FrameQuarryResourc"));
}

TEST(Binary, ThreadsComeAndGoWhileTheModuleIsLoaded) {
    fake::Host host;
    Module module = open();
    ASSERT_NE(module, nullptr);
    std::thread([] { Zq::ThreadAttachment const attachment; }).join();
    std::thread([&module] {
        Zq::ThreadAttachment const attachment; // ends after the module has gone
        module.reset();
    }).join();
    EXPECT_FALSE(Zq::takeRefusal());
}

TEST(Binary, LeavesTheProcessOnEachOfAThousandUnloads) {
    fake::Host host;
    std::string const fileName = std::filesystem::path(modulePath).filename();
    std::size_t mappingsAfterFirst = 0;
    for (int round = 0; round < 1000; ++round) {
        {
            Module const module = open();
            ASSERT_NE(module, nullptr) << dlerror();
            ZqPluginBase* plugin = nullptr;
            entryOf(module)(&plugin);
            ASSERT_NE(plugin, nullptr);
            plugin->postLoadInitialization();
            ASSERT_TRUE(isMapped(fileName));
            plugin->preUnloadDeinitialization();
        }
        ASSERT_FALSE(isMapped(fileName)) << "round " << round;
        if (round == 0) {
            mappingsAfterFirst = fileMappings();
        }
    }
    EXPECT_EQ(fileMappings(), mappingsAfterFirst) << "the memory map does not grow";
    EXPECT_TRUE(host.files.providers.empty());
}

} // namespace
