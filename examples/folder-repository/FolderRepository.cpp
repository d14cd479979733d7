// Who the repository is, which folder it shows, and what it has no use for.

#include "FolderRepository.h"

#include <system_error>

#include "host/os/OS.h"
#include "host/os/iShell.h"
#include "host/parameters/Listener.h"
#include "host/parameters/TextParam.h"
#include "host/preferences/EditorPreferences.h"
#include "host/text/Unicode.h"

namespace {

constexpr std::uint32_t resourceTag = 0x52444c46; // "FLDR", the first character in the lowest byte
constexpr char const* folderPreference = "FO Folder";
constexpr wchar_t const* usualFolder = L"Footage";

// Why the folder cannot be listed; no error where it can.
std::error_code problemOf(std::filesystem::path const& folder) {
    std::error_code error;
    std::filesystem::directory_iterator const listing(folder, error);
    return error;
}

} // namespace

FolderRepository::FolderRepository()
    : ZqResourceTypeBase("Folder", ZqResourceType::mediaFileRepository, resourceTag) {}

RepositoryDescription FolderRepository::getDescription() const {
    RepositoryDescription description = newDescription();
    description.name = L"Folder";
    description.summary = L"The media files below " + wideText(folder());
    description.shortName = getShortName();
    return description;
}

WideString FolderRepository::getShortName() const {
    return L"FO";
}

// Behind the services, which come with 0: the host takes the first where nobody names one.
int FolderRepository::priority() const {
    return -1;
}

std::filesystem::path FolderRepository::folder() {
    WideString const media = OS().shell().getStandardFolder(iShell::mediaFolder);
    WideString const chosen = prefs().getPreference(folderPreference, usualFolder);
    // A relative path lies below the host's media folder; an absolute one takes its place.
    return localPath(media) / localPath(chosen);
}

std::int32_t FolderRepository::connect(HTTPConnectionInfo const&, LoggerHandle) {
    return isConnected() ? 0 : 11;
}

bool FolderRepository::isConnected() const {
    return !problemOf(folder());
}

WideString FolderRepository::getStatusText() const {
    std::error_code const problem = problemOf(folder());
    return problem ? L"the folder " + wideText(folder()) + L" cannot be read: " +
                         fromUTF8(problem.message().c_str())
                   : WideString();
}

LightweightVector<SearchOptionGroup> FolderRepository::getSearchOptions() {
    auto const param = Zq::makeShared<GenericParam::TextParam>(
        L"Folder", "folder", L"The folder whose media files are shown", wideText(folder()));
    if (!param) {
        return {}; // no memory
    }
    param->addChangeHandler(Zq::makeShared<GenericParam::Listener<FolderRepository, WideString>>(
        *this, &FolderRepository::handleFolderChange));
    return {{L"Place", {param}}};
}

void FolderRepository::handleFolderChange(WideString path) {
    prefs().setPreference(folderPreference, path);
    notifier.issueNotification(NotifyMsg(), eSearchOptionsChanged);
}

// No form: the host lets everybody have everything, and offers no purchase.
WideString FolderRepository::getLoginForm() {
    return {};
}

WideString FolderRepository::getLoginLinkForm() {
    return {};
}

std::int32_t FolderRepository::login(configb const&) {
    return 17;
}

void FolderRepository::logout() {}

std::int32_t FolderRepository::requestExternalPurchase(LightweightVector<RemoteAsset> const&) {
    return 0;
}

std::int32_t FolderRepository::requestCreditPurchase(LightweightVector<RemoteAsset> const&) {
    return 0;
}
