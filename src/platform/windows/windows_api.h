// The Windows headers, the same way in every file that needs them. For this folder,
// src/automation and their tests alone: what these headers define as macros reaches everything
// after them.
#pragma once

#ifndef _WIN32_WINNT
#define _WIN32_WINNT 0x0A00
#endif
#ifndef UNICODE
#define UNICODE
#endif
#ifndef _UNICODE
#define _UNICODE
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif

#include <windows.h>

// Names of our own interfaces.
#undef DeleteFile
#undef Yield
