// SPDX-License-Identifier: see LICENSE

#include "platform/qxtestsystem.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

struct Interrupts::Before {
    struct sigaction action = {};
};

bool isAccessible(unsigned char* address)
{
    const int zero = open("/dev/zero", O_RDONLY);
    const bool result = read(zero, address, 1) == 1;
    close(zero);
    return result;
}

Interrupts::Interrupts() : m_before(std::make_unique<Before>())
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &m_before->action); // without SA_RESTART: it ends system calls
}

Interrupts::~Interrupts()
{
    sigaction(SIGUSR1, &m_before->action, nullptr);
}

void Interrupts::send(std::thread& thread)
{
    pthread_kill(thread.native_handle(), SIGUSR1);
}
