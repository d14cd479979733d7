// From files to assets: a page of what the words find, and all that there is.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <limits>
#include <system_error>

#include "FolderRepository.h"
#include "repository/ResultList.h"

namespace {

namespace fs = std::filesystem;

// Columns of one's own have numbers from 1000 and a key.
LogAttribute ownColumn(wchar_t const* title, char const* key, int number) {
    return LogAttribute(UIString(title), key, DBFieldTypes::text, LogAttribute::eShown, 90,
                        static_cast<LogAttribute::eType>(LogAttribute::eFirstCustom + number));
}
LogAttribute sizeColumn() {
    return ownColumn(L"Size", "size", 1);
}
LogAttribute dateColumn() {
    return ownColumn(L"Modified", "modified", 2);
}

NarrowString sizeText(std::uintmax_t size_bytes) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f MB", static_cast<double>(size_bytes) / 1e6);
    return text.data();
}

NarrowString dateText(fs::file_time_type time) {
    namespace chrono = std::chrono;
    chrono::year_month_day const day(chrono::floor<chrono::days>(chrono::file_clock::to_sys(time)));
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    return text.data();
}

} // namespace

LightweightVector<LogAttribute> FolderRepository::getLogAttributes() const {
    return resultColumns(
        {LogAttribute(LogAttribute::eName), LogAttribute(LogAttribute::eFormat), sizeColumn(), dateColumn()});
}

RemoteAsset FolderRepository::assetOf(ClipFile const& clip) const {
    RemoteAsset asset;
    asset.id = clip.id;
    // The file is preview and full media in one. A plain path needs no file provider.
    asset.mediaLocation = asset.proxyLocation = wideText(clip.path);
    asset.mediaExtension = asset.proxyExtension = wideText(clip.path.extension()).substr(1);
    asset.videoChannels = 1;
    asset.logAttributes.add(LogAttribute(LogAttribute::eName), clip.name);
    asset.logAttributes.add(LogAttribute(LogAttribute::eClipId), getShortName() + clip.id);
    asset.logAttributes.add(LogAttribute(LogAttribute::eSource), WideString(L"Folder"));
    asset.displayAttributes.add(LogAttribute(LogAttribute::eFormat), asset.mediaExtension);

    // The file may be gone by now: then these say nothing.
    std::error_code error;
    if (std::uintmax_t const size_bytes = fs::file_size(clip.path, error); !error) {
        asset.mediaSize = asset.proxySize = size_bytes;
        asset.displayAttributes.add(sizeColumn(), sizeText(size_bytes));
    }
    if (fs::file_time_type const time = fs::last_write_time(clip.path, error); !error) {
        asset.displayAttributes.add(dateColumn(), dateText(time));
    }
    return asset;
}

SearchResults FolderRepository::searchInternal(SearchQuery const& query) {
    std::vector<ClipFile> const clips = findClips(folder(), getSearchPattern(query));
    // The contract counts in 16 bits.
    constexpr std::size_t mostClips = std::numeric_limits<std::uint16_t>::max();
    std::size_t const count = std::min(clips.size(), mostClips);
    SearchResults results;
    results.totalCount = static_cast<std::uint16_t>(count);
    results.pageCount = countPages(results.totalCount, query.pageSize);
    if (query.page == 0) {
        return results; // the first is 1
    }
    std::size_t const begin = std::min(std::size_t{query.pageSize} * (query.page - 1U), count);
    std::size_t const end = std::min(begin + query.pageSize, count);
    for (std::size_t i = begin; i < end; ++i) {
        results.assets.push_back(assetOf(clips[i]));
    }
    return results;
}

// The base would keep the pages that it has seen. A disk is quick to ask, and its files come and go.
SearchResults FolderRepository::search(SearchQuery const& query) {
    return searchInternal(query);
}

SearchResults FolderRepository::getFiles(BrowseQuery const& query, bool) {
    return getFilesInternal(query);
}

LightweightVector<RemoteAsset> FolderRepository::getPurchasedAssets() {
    LightweightVector<RemoteAsset> assets;
    for (ClipFile const& clip : findClips(folder(), WideString())) {
        assets.push_back(assetOf(clip));
    }
    return assets;
}
