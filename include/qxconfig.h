// The version, the export macro, the fixed-size integers and the platform's GUID record.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// The library's version. It names the shared library and stands in location texts.
#define QX_VERSION "2.10.1"

// QX_API marks ordinary classes and functions that applications may use; nothing else is exported.
#if defined(_WIN32)
#if defined(QX_BUILDING)
#define QX_API __declspec(dllexport)
#else
#define QX_API __declspec(dllimport)
#endif
#else
#define QX_API __attribute__((visibility("default")))
#endif

// QX_ONE_COPY marks inline virtual operations that are called all the time. There is one of each in a process then, and
// compilers take it without a call when an object's table shows its address.
#if defined(_WIN32)
#define QX_ONE_COPY
#else
#define QX_ONE_COPY QX_API
#endif

// Some compilers define __int64 themselves; callers may write either spelling everywhere.
#if !defined(__int64) && !defined(_MSC_VER)
#define __int64 long long
#endif

/// Signed 64-bit integer.
typedef long long qxInt64;

/// Unsigned 64-bit integer.
typedef unsigned long long qxUInt64;

// The system's own record where it has one, so that its functions take ours. Whoever comes first defines it: its headers
// look at this guard as well.
#if defined(_WIN32)
#if !defined(GUID_DEFINED)
#define GUID_DEFINED
typedef struct _GUID {
    unsigned long Data1;
    unsigned short Data2;
    unsigned short Data3;
    unsigned char Data4[8];
} GUID;
#endif
typedef GUID qxGUIDRecord;
#else
/// The 16 bytes of a GUID as the platform lays them out.
struct qxGUIDRecord {
    unsigned int Data1;
    unsigned short Data2;
    unsigned short Data3;
    unsigned char Data4[8];
};
#endif

static_assert(sizeof(qxGUIDRecord) == 16, "the fields of a GUID have 32, 16, 16 and 8 x 8 bits");
static_assert(sizeof(qxInt64) == 8, "the library needs 64-bit integers");
static_assert(sizeof(unsigned int) == 4, "the library needs 32-bit integers");
static_assert(sizeof(void*) == 8, "the library needs a 64-bit system");
