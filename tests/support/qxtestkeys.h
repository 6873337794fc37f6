// User keys for tests.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstdlib>
#include <list>
#include <string>

/// Gives a variable of the environment, which is where user keys come from, for the rest of the process.
inline void setUserKey(const std::string& name, const std::string& value)
{
    static std::list<std::string> s_variables; // the environment keeps pointers into it
    s_variables.push_back(name + "=" + value);
    putenv(s_variables.back().data());
}
