// Marks what the host library exports to programs and modules.
#pragma once

#if defined(_WIN32)
#if defined(ZQHOST_BUILD)
#define ZQ_API __declspec(dllexport)
#else
#define ZQ_API __declspec(dllimport)
#endif
#else
#define ZQ_API __attribute__((visibility("default")))
#endif
