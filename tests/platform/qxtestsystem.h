// What the tests of the platform floor ask of the system beside the floor itself.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <memory>
#include <thread>

/// Whether the process may write the byte; asks the system, which answers instead of ending the process.
bool isAccessible(unsigned char* address);

/// While it lives, threads can be made to look up from a system call that waits, where the system knows such a thing.
class Interrupts
{
public:
    Interrupts();
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    void send(std::thread& thread);

private:
    struct Before;
    std::unique_ptr<Before> m_before;
};
