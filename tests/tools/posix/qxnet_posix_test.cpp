// SPDX-License-Identifier: see LICENSE

#include "net/qxnettest.h"
#include "tools/qxtooltest.h"

#include "qxthread.h"

#include <cstdlib>
#include <future>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

// Only the system's own calls reset a connection without saying that nothing more will come.
TEST_F(Tool, saysThatItsPeerHasReset)
{
    std::future<int> status =
        std::async(std::launch::async, [this] { return run("net listen 127.0.0.1:0 --wait 60000"); });
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string start = "qx: port ";
    for (std::string told; !told.ends_with('\n'); qxThread::qxDelayFunction(1)) {
        told = content("../err");
        if (told.starts_with(start))
            place.sin_port = htons(static_cast<unsigned short>(std::atoi(told.c_str() + start.size())));
    }
    const int peer = socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(connect(peer, reinterpret_cast<const sockaddr*>(&place), sizeof(place)), 0);
    send(peer, "some", 4, 0);
    const linger drop = {1, 0};
    setsockopt(peer, SOL_SOCKET, SO_LINGER, &drop, sizeof(drop));
    close(peer);
    EXPECT_EQ(status.get(), 4);
    EXPECT_TRUE(hasError("qx: error: qxSocket error: Connection was reset\n")) << err;
}

// Who types does not end the input after each line.
TEST(NetToolPosix, sendsALineBeforeTheNextComes)
{
    Listener listener;
    const qxString command = qxString(QX_TOOL) + " net send " + listener.getBindAddress().asString();
    std::FILE* const input = popen(command.getString(), "w");
    ASSERT_TRUE(input);
    const qxRefPointer<qxSocket> peer = listener.accept();
    for (const char* const line : {"first\n", "second\n"}) {
        std::fputs(line, input);
        std::fflush(input);
        EXPECT_EQ(receiveText(*peer), line);
    }
    peer->close(0);
    EXPECT_EQ(pclose(input), 0);
}

} // namespace
