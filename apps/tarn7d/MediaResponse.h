// Sends a file as the answer to a GET or HEAD: whole, in part, or not at all because the client has it.
#pragma once

#include <filesystem>
#include <string>

#include <httplib.h>

namespace tarn7d {

// Fills the answer: 200, 206 for one byte range, 304, 416, or 404 when the file cannot be opened. The file
// carries a strong ETag; several ranges at once, and a range with an If-Range of another ETag, get the whole
// file. The file may be replaced while it is sent: the answer goes on with the old one. A Cache-Control
// that the answer has already stays. Any thread.
void sendFile(httplib::Request const& request, httplib::Response& response, std::filesystem::path const& file,
              std::string const& contentType);

// Fills the answer with a text of this type, never compressed.
void sendText(httplib::Response& response, int status, std::string text, std::string const& contentType);

} // namespace tarn7d
