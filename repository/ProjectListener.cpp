#include "repository/ProjectListener.h"

ProjectListener::~ProjectListener() = default;
void ProjectListener::handleLogsModification(LightweightVector<Cookie> const&) {}
void ProjectListener::handleLogsDeletion(LightweightVector<Cookie> const&) {}
void ProjectListener::handleLogDirtied(Cookie const&) {}
void ProjectListener::handleLogStorage(Cookie const&) {}
void ProjectListener::handleProjectEntry() {}
void ProjectListener::handleProjectExit() {}
void ProjectListener::handleLobbyEntry() {}
