// Includes what belongs to no floor.
#pragma once

#include <curl/curl.h>
