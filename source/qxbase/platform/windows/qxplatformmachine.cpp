// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformmachine.h"

#include "platform/windows/qxwindows.h"

#include <algorithm>

#include <ntsecapi.h>

std::string qxPlatformMachineIdentity()
{
    wchar_t text[256];
    DWORD bytes = sizeof(text);
    const LSTATUS status =
        RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Cryptography", L"MachineGuid",
                     RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr, text, &bytes);
    if (status == ERROR_SUCCESS && text[0] != 0) return qxNarrowText(text);
    DWORD units = 256;
    return GetComputerNameW(text, &units) ? qxNarrowText({text, units}) : std::string();
}

bool qxPlatformRandomBytes(void* bytes, std::size_t count, int& error)
{
    error = 0;
    auto* next = static_cast<unsigned char*>(bytes);
    while (count > 0) {
        const auto part = static_cast<ULONG>(std::min<std::size_t>(count, 0x10000000));
        if (!RtlGenRandom(next, part)) {
            error = qxErrorNumber(GetLastError());
            return false;
        }
        next += part;
        count -= part;
    }
    return true;
}
