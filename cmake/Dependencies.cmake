# Libraries behind the engine, the programs and the tests; nothing under plugin, tarn7 or repository links them.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(CURL REQUIRED)
find_package(OpenSSL 3 REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(spdlog REQUIRED)
find_package(simdjson REQUIRED)
find_package(tomlplusplus REQUIRED)
find_package(CLI11 REQUIRED)
find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
find_package(pugixml REQUIRED)
pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET
                  libavformat libavcodec libavutil libswscale libswresample)
