// The system's header, without what nobody here needs, and texts as the system takes them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>
#include <string_view>

#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX) // the C++ library defines it too
#define NOMINMAX
#endif
#include <windows.h>

/// `text`, UTF-8, in the system's 16-bit units; bytes that are no UTF-8 become U+FFFD.
std::wstring qxWideText(std::string_view text);

/// The other way; halves of pairs become U+FFFD.
std::string qxNarrowText(std::wstring_view text);

/// The number of the C library that means the same as `error` of the system: this floor hands out one kind only.
int qxErrorNumber(DWORD error);
