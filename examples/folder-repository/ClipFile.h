// The media files of a folder, with nothing of a repository in it yet.
//
// The folder is not ours: it may be unreadable, vanish while it is read, lead in circles and hold names of
// any bytes. Nothing here throws for that; what cannot be read is not there.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "host/text/LightweightString.h"

struct ClipFile {
    std::filesystem::path path;
    WideString id;   // a decimal number, the same in every run for the same path below the folder
    WideString name; // of the file, without its extension
};

// The clips in the folder and in those below it whose path below the folder holds all of the words, whatever
// their case, or whose id is the text; all clips for an empty text. In the order of their paths.
[[nodiscard]] std::vector<ClipFile> findClips(std::filesystem::path const& folder, WideString const& words);

// The picture that lies beside the clip under its name; empty where there is none.
[[nodiscard]] std::filesystem::path pictureBeside(std::filesystem::path const& clip);

// Between the contract's texts, UTF-16, and the system's paths.
[[nodiscard]] WideString wideText(std::filesystem::path const& path);
[[nodiscard]] std::filesystem::path localPath(WideString const& text);
