// Classes and case of ASCII characters; bytes of 128 and more belong to none and have no case.
// SPDX-License-Identifier: see LICENSE

#pragma once

// The C library's own functions follow the locale that an application sets; these never do.

inline bool qxIsDigit(char c)
{
    return c >= '0' && c <= '9';
}

inline bool qxIsWhiteSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

inline char qxToUpper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

inline char qxToLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// The value of a hexadecimal digit in either case; -1 for any other character.
inline int qxHexValue(char c)
{
    if (qxIsDigit(c)) return c - '0';
    const char lower = qxToLower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}
