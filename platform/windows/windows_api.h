// SPDX-License-Identifier: BSD-3-Clause
#pragma once

// The system's header without its rarely used parts and without its macros `min` and `max`.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

// Error numbers that this SDK does not name yet.
#ifndef ERROR_DIRECTORY_NOT_SUPPORTED
#define ERROR_DIRECTORY_NOT_SUPPORTED 336L
#endif
#ifndef ERROR_DISK_QUOTA_EXCEEDED
#define ERROR_DISK_QUOTA_EXCEEDED 1295L
#endif
