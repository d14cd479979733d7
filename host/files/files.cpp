#include "host/files/iCacheStore.h"
#include "host/files/iFile.h"
#include "host/files/iFileManager.h"

iFile::~iFile() = default;
iFileManager::~iFileManager() = default;
iCacheStore::~iCacheStore() = default;
