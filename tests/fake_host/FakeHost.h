// A whole host in memory: install it, run the code under test, look at what happened. Reading JSON and
// hashing are the real ones.
#pragma once

#include "host/HostServices.h"
#include "host/engine/crypto/OpenSSLHash.h"
#include "host/engine/json/SimdjsonReader.h"
#include "tests/fake_host/FakeEdits.h"
#include "tests/fake_host/FakeMemory.h"
#include "tests/fake_host/FakeNetwork.h"
#include "tests/fake_host/FakePreferences.h"
#include "tests/fake_host/FakeStreaming.h"
#include "tests/fake_host/FakeSystem.h"

namespace fake {

// Behind the doors from construction to destruction.
class Host {
public:
    Host() : images(cache) {
        HostServices services;
        services.memory = &memory;
        services.files = &files;
        services.shell = &shell;
        services.security = &security;
        services.network = &network;
        services.preferences = &preferences;
        services.configuration = &configuration;
        services.strings = &strings;
        services.log = &log;
        services.json = &json;
        services.clock = &clock;
        services.cache = &cache;
        services.images = &images;
        services.tasks = &tasks;
        services.edits = &edits;
        services.externalIds = &externalIds;
        services.actions = &actions;
        services.streams = &streams;
        before_ = installHost(services);
    }
    ~Host() { installHost(before_); }
    Host(Host const&) = delete;
    Host& operator=(Host const&) = delete;

    Memory memory;
    FileManager files;
    Shell shell;
    engine::OpenSSLSecurity security;
    Network network;
    Preferences preferences;
    Configuration configuration;
    Strings strings;
    LogSink log;
    engine::SimdjsonReader json;
    Clock clock;
    Cache cache;
    ImageDecoder images;
    TaskContext tasks;
    Edits edits;
    ExternalIds externalIds;
    Actions actions;
    StreamingFiles streams;

private:
    HostServices before_;
};

} // namespace fake
