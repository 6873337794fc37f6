// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformmachine.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include <sys/random.h>
#include <unistd.h>

namespace
{

constexpr std::size_t HOST_NAME_ROOM = 256;

// The file's first line; empty when there is none.
std::string firstLineOf(const std::filesystem::path& name)
{
    std::ifstream file(name);
    std::string line;
    std::getline(file, line);
    return line;
}

// The hardware address of the first device that has one.
std::string networkAddress()
{
    std::error_code ignored;
    std::vector<std::filesystem::path> devices;
    for (std::filesystem::directory_iterator entry("/sys/class/net", ignored), end; !ignored && entry != end;
         entry.increment(ignored))
        devices.push_back(entry->path());
    std::sort(devices.begin(), devices.end());
    for (const std::filesystem::path& device : devices) {
        const std::string address = firstLineOf(device / "address");
        if (address.find_first_not_of("0:") != std::string::npos) return address;
    }
    return {};
}

} // namespace

std::string qxPlatformMachineIdentity()
{
    for (const char* const name : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
        const std::string identity = firstLineOf(name);
        if (!identity.empty() && identity != "uninitialized") return identity;
    }
    if (const std::string address = networkAddress(); !address.empty()) return address;
    char host[HOST_NAME_ROOM + 1] = {};
    return gethostname(host, HOST_NAME_ROOM) == 0 ? host : std::string();
}

bool qxPlatformRandomBytes(void* bytes, std::size_t count, int& error)
{
    error = 0;
    auto* next = static_cast<unsigned char*>(bytes);
    while (count > 0) {
        const ssize_t got = getrandom(next, count, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            error = errno;
            return false;
        }
        next += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}
