// How the tool ends.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// Exit status of the tool.
enum class qxStatus : int {
    DONE = 0,
    NO = 1,        ///< the answer is no
    USAGE = 2,     ///< the command line is wrong
    MALFORMED = 3, ///< the input is malformed
    NO_FILE = 4,   ///< something cannot be opened, read or written
    LIMIT = 5,     ///< a limit was met
    FATAL = 70,    ///< fatal error of the library
    INTERRUPTED = 130
};
