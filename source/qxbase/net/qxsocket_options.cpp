// SPDX-License-Identifier: see LICENSE

#include "net/qxsocketuse.h"
#include "qxmessage.h"
#include "qxsocket.h"

namespace
{

constexpr unsigned int OPTIONS = 13;

static_assert(QX_SOCKET_OPTION_MULTICAST_TTL == static_cast<unsigned int>(QX_PLATFORM_OPTION_MULTICAST_TTL));
static_assert(QX_SOCKET_OPTION_SEND_BUFFER == static_cast<unsigned int>(QX_PLATFORM_OPTION_SEND_BUFFER));

const char* whyNotAnswered(qxSocketOption option, bool isActive)
{
    if (!isActive) return "qxSocket not created";
    if (option >= OPTIONS) return "Unknown socket option";
    if (option == QX_SOCKET_OPTION_MULTICAST_TTL || option == QX_SOCKET_OPTION_RECEIVE_BUFFER ||
        option == QX_SOCKET_OPTION_SEND_BUFFER)
        return nullptr;
    return "Socket option not supported";
}

// The number in `value`; false when it is none that the system can take.
bool readNumber(qxSocketOption option, const qxDynamicType& value, int& number)
{
    if (option == QX_SOCKET_OPTION_MULTICAST_INTERFACE && value.is("str")) {
        const qxHostAddress address(value.getString());
        number = static_cast<int>(address.asULong());
        return address.getType() == QX_HOST_ADDRESS_IPV4;
    }
    if (!value.is("num") && !value.is("llnum")) return false;
    const double real = value.getNumber();
    if (!(real >= -2147483648.0 && real < 4294967296.0)) return false;
    number = static_cast<int>(static_cast<qxInt64>(real));
    return true;
}

} // namespace

qxDynamicType qxSocket::getOption(qxSocketOption option)
{
    const char* why = whyNotAnswered(option, isActive());
    int value = 0;
    if (!why) {
        qxSocketError ignored = QX_SOCKET_NO_ERROR;
        const int result = run(
            [&](qxPlatformSocket socket, int& error) {
                const auto name = static_cast<qxPlatformSocketOption>(option);
                return qxPlatformSocketGetOption(socket, name, value, error) ? 1 : -1;
            },
            ignored);
        if (result > 0) return static_cast<double>(value);
        why = "Failed to get socket option";
    }
    qxMessage::message(QX_LEVEL_WARNING, why);
    return {};
}

unsigned char qxSocket::setOption(qxSocketOption option, const qxDynamicType& value)
{
    int number = 0;
    if (option < OPTIONS && readNumber(option, value, number)) return setNumber(option, number);
    if (option >= OPTIONS) qxMessage::message(QX_LEVEL_WARNING, "Unknown socket option");
    report(option < OPTIONS ? QX_SOCKET_INVALID_ARGUMENT : QX_SOCKET_UNKNOWN_OPTION);
    return 0;
}

unsigned char qxSocket::setNumber(qxSocketOption option, int value)
{
    return use([&](qxPlatformSocket socket, int& error) {
               const auto name = static_cast<qxPlatformSocketOption>(option);
               return qxPlatformSocketSetOption(socket, name, value, error) ? 1 : -1;
           }) > 0;
}

unsigned char qxSocket::setReceiveBufferSize(unsigned int bytes)
{
    return setOption(QX_SOCKET_OPTION_RECEIVE_BUFFER, static_cast<double>(bytes));
}
