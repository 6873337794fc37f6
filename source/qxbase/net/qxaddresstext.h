// Addresses as texts.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>
#include <string_view>

/// Reads an IPv4 address into four bytes; false, and `bytes` are anything, for another text.
///
/// Threads, errors: any, none; as all functions here.
bool qxReadIPv4(std::string_view text, unsigned char* bytes);

/// Reads an IPv6 address, without what follows "%", into sixteen bytes; false, and `bytes` are anything, for another text.
bool qxReadIPv6(std::string_view text, unsigned char* bytes);

/// Reads an unsigned decimal number of digits alone that is at most `maximum`.
bool qxReadDecimal(std::string_view text, unsigned int maximum, unsigned int& number);

/// The number of four bytes, the first one highest.
inline unsigned int qxIPv4Number(const unsigned char* bytes)
{
    unsigned int number = 0;
    for (unsigned int i = 0; i < 4; ++i) number = number << 8 | bytes[i];
    return number;
}

std::string qxWriteIPv4(const unsigned char* bytes);
std::string qxWriteIPv6(const unsigned char* bytes);
