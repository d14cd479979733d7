#include "repository/iFileProvider.h"

#include "host/HostServices.h"

// Also where it is never a whole object: a repository registers its provider before it is built to the end.
iFileProvider::~iFileProvider() {
    if (iFileManager* const files = installedHost().files) {
        files->forgetProvider(*this);
    }
}

std::uint64_t iFileProvider::getFileSize(WideString const& path) {
    Zq::Ptr<iFile> const file = openFile(path, 1, 0, 4, 0);
    return file ? file->getSize() : 0;
}

std::int32_t iFileProvider::getFileKind(WideString const& path) {
    return getFileInfo(path).kind;
}

FileInfo iFileProvider::getFileInfo(WideString const& path) {
    FileInfo info;
    info.path = path;
    info.size = getFileSize(path);
    return info;
}

bool iFileProvider::isWritable() const {
    return false;
}

WideString iFileProvider::getProviderName() const {
    return {};
}

WideString iFileProvider::makeVirtualPath(WideString const& location) const {
    constexpr std::wstring_view prefix = L"Virtual:";
    WideString const provider = getProviderName();
    WideString path;
    path.reserve(static_cast<std::uint32_t>(prefix.size()) + provider.length() + 1 + location.length());
    path.append(prefix);
    path += provider;
    path += L' ';
    path += location;
    return path;
}

bool iFileProvider::isTemporary() const {
    return false;
}
void iFileProvider::handleFolderChange() {}
