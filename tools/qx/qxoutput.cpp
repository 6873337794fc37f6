// SPDX-License-Identifier: see LICENSE

#include "qxoutput.h"

#include <cstdio>

void writeOutput(std::string_view text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        throw qxFileError("Could not write to standard output");
}

void flushOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        throw qxFileError("Could not write to standard output");
}

std::string quote(std::string_view text)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string result = "\"";
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        switch (c) {
        case '"':
            result += "\\\"";
            break;
        case '\\':
            result += "\\\\";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\t':
            result += "\\t";
            break;
        default:
            if (byte >= 32 && byte != 127) {
                result += c;
            } else {
                result += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
            }
        }
    }
    result += '"';
    return result;
}
