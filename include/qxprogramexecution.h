// Bodies of code that let no exception out.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"

class qxMemoryCheck;
class qxStackInfo;

/// A body that is run with the library's reports: what it raises is reported and goes no further.
///
/// Lifetime: the body may delete its own object.
/// Threads:  as the derived class says.
/// Errors:   none leave `execute`; what the reports themselves raise is lost.
class QX_API qxProgramExecution
{
public:
    qxProgramExecution() = default;
    qxProgramExecution(const qxProgramExecution&) = default;
    qxProgramExecution& operator=(const qxProgramExecution&) = default;
    virtual ~qxProgramExecution() noexcept(false);

    /// Runs onProgramExecution. An error of the library goes to onBaseException; any other exception is sent as a Fatal
    /// message with its text, and onCrash is called. Where the system unwinds the thread it is let through.
    ///
    /// `owner` is the same object, when it may be gone at the end of the body: the report is then made without it.
    void execute(const qxMemoryCheck* owner = nullptr);

protected:
    virtual void onProgramExecution() = 0;

    /// Called after an exception that is none of the library's. The information is null as long as there is no way to
    /// read stacks. The base does nothing.
    virtual void onCrash(qxStackInfo* info);

    /// The base calls the error's reportError.
    virtual void onBaseException(const qxBaseError& error);
};
