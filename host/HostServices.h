// What a host gives to the doors of the host library: one record of service interfaces.
//
// The library needs the C++ runtime alone; another editor fills this record with its own services.
#pragma once

#include "host/object/Api.h"

class iMemory;
class iRefCounts;
class iFileManager;
class iShell;
class iSecurity;
class iNetwork;
class iPreferenceStore;
class iConfiguration;
class iResourceStrings;
class iLogSink;
class iJSONReader;
class iClock;
class iCacheStore;
class iImageDecoder;
class iTaskContext;
class iEditStore;
class iExternalIds;
class iActionRecord;
class iStreamingFiles;

struct HostServices {
    iMemory* memory = nullptr;       // null: the C runtime's
    iRefCounts* refCounts = nullptr; // null: plain atomic counts
    iFileManager* files = nullptr;
    iShell* shell = nullptr;
    iSecurity* security = nullptr;
    iNetwork* network = nullptr;
    iPreferenceStore* preferences = nullptr; // null: every preference has its default, none is kept
    iConfiguration* configuration = nullptr; // null: every key has its default
    iResourceStrings* strings = nullptr;     // null: every text is empty
    iLogSink* log = nullptr;                 // null: nothing is logged
    iJSONReader* json = nullptr;
    iClock* clock = nullptr;
    iCacheStore* cache = nullptr;        // null: nothing is cached on disk
    iImageDecoder* images = nullptr;     // null: no picture can be read
    iTaskContext* tasks = nullptr;       // null: no thread runs a task
    iEditStore* edits = nullptr;         // null: no edit can be made or opened
    iExternalIds* externalIds = nullptr; // null: nothing has an external id
    iActionRecord* actions = nullptr;    // null: no action is recorded
    iStreamingFiles* streams = nullptr;  // null: no file streams from a server
};

// Makes the services of `services` the ones behind every door and gives back those before them. The services
// stay the caller's and outlive their installation. Thread: call while no other thread uses a door.
ZQ_API HostServices installHost(HostServices const& services) noexcept;

// The record behind the doors. Thread: any.
[[nodiscard]] ZQ_API HostServices const& installedHost() noexcept;
