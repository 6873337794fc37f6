// Another program that saves settings.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <memory>
#include <string>

/// Runs qxkeywriter, which saves keys of a prefix and says the name of each.
class WriterProgram
{
public:
    WriterProgram(const std::string& url, const std::string& prefix, int keys);
    ~WriterProgram();

    /// The next name that it says; empty at its end.
    std::string readName();

    /// Ends it wherever it is.
    void kill();

    /// Waits for its end and returns its exit status.
    int wait();

    /// How many can be started and killed in a few seconds.
    static const int QUICK_ROUNDS;

private:
    struct Process;
    const std::unique_ptr<Process> m_process;
    std::string m_said;
};
