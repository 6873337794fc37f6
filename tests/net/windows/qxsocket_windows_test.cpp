// SPDX-License-Identifier: see LICENSE

#include "net/qxnettest.h"

#include <windows.h>

namespace
{

TEST(qxSocketWindows, theSystemsLastErrorCanBeTaken)
{
    const struct {
        DWORD number; // as the system's documents list them
        qxSocketError error;
    } rows[] = {
        {10046, QX_SOCKET_PROTOCOL_FAMILY},
        {10047, QX_SOCKET_ADDRESS_FAMILY},
        {10013, QX_SOCKET_PERMISSION_DENIED},
        {10043, QX_SOCKET_PROTOCOL_NOT_SUPPORTED},
        {10093, QX_SOCKET_NOT_INITIALISED},
        {10065, QX_SOCKET_HOST_NOT_REACHABLE},
        {10051, QX_SOCKET_NETWORK_NOT_REACHABLE},
        {10042, QX_SOCKET_UNKNOWN_OPTION},
        {10009, QX_SOCKET_INVALID_DESCRIPTOR},
        {10038, QX_SOCKET_INVALID_DESCRIPTOR},
        {10022, QX_SOCKET_INVALID_ARGUMENT},
        {10048, QX_SOCKET_ADDRESS_IN_USE},
        {10049, QX_SOCKET_ADDRESS_NOT_AVAILABLE},
        {10056, QX_SOCKET_IS_CONNECTED},
        {10057, QX_SOCKET_NOT_CONNECTED},
        {10054, QX_SOCKET_CONNECTION_RESET},
        {10053, QX_SOCKET_CONNECTION_ABORTED},
        {10061, QX_SOCKET_CONNECTION_REFUSED},
        {10060, QX_SOCKET_TIMED_OUT},
        {10035, QX_SOCKET_WOULD_BLOCK},
        {10040, QX_SOCKET_TRUNCATED},
        {10004, QX_SOCKET_ABORTED},
        {10055, QX_SOCKET_UNKNOWN_ERROR}, // no buffers: in no row of the library's own
        {0, QX_SOCKET_NO_ERROR},
    };
    qxSocket socket;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.number);
        SetLastError(row.number);
        socket.setSocketError(QX_SOCKET_SYSTEM_ERROR);
        EXPECT_EQ(socket.getSocketError(), row.error);
    }
    socket.useExceptions(1);
    SetLastError(10038);
    EXPECT_EQ(warningText([&] { socket.setSocketError(QX_SOCKET_SYSTEM_ERROR); }),
              "qxSocket error: Invalid descriptor");
    EXPECT_EQ(GetLastError(), 0U);
}

} // namespace
