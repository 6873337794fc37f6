// SPDX-License-Identifier: see LICENSE

#include "qxoutput.h"

#include "qxusage.h"

#include "qxserializeadapterreplace.h"

#include <cstdio>
#include <cstring>

namespace
{

void writeAll(qxSerializeAdapter& output, std::string_view bytes)
{
    if (output.hasError()) throw qxFileError(output.getError().getString());
    output.write(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

// The value of a hexadecimal digit; 16 for what is none.
unsigned int digitOf(char c)
{
    static const char digits[] = "0123456789ABCDEF";
    const char* const place =
        c != 0 ? std::strchr(digits, c >= 'a' && c <= 'f' ? c - 'a' + 'A' : c) : nullptr;
    return place ? static_cast<unsigned int>(place - digits) : 16;
}

} // namespace

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

void writeFile(const std::string& name, std::string_view bytes)
{
    if (name.empty()) throw qxUsageError("a file name is empty");
    if (name == "-") return writeOutput(bytes);
    if (!qxSerializeAdapterReplace::canReplace(name.c_str())) {
        qxSerializeAdapterFile output(name.c_str(), QX_SERIALIZE_OUTPUT);
        writeAll(output, bytes);
        output.flush();
        if (output.hasError()) throw qxFileError(output.getError().getString());
        return;
    }
    qxSerializeAdapterReplace output(name.c_str());
    writeAll(output, bytes);
    if (!output.commit()) throw qxFileError(output.getError().getString());
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

std::optional<std::string> unquote(std::string_view text)
{
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') return std::nullopt;
    text = text.substr(1, text.size() - 2);
    static const char letters[] = "\"\\nrt";
    static const char meanings[] = "\"\\\n\r\t";
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') return std::nullopt;
        if (text[i] != '\\') {
            result += text[i];
            continue;
        }
        if (++i == text.size()) return std::nullopt;
        if (const char* const letter = std::strchr(letters, text[i]); letter && *letter) {
            result += meanings[letter - letters];
            continue;
        }
        const unsigned int high = text[i] == 'x' && i + 2 < text.size() ? digitOf(text[i + 1]) : 16;
        const unsigned int low = high < 16 ? digitOf(text[i + 2]) : 16;
        if (low == 16) return std::nullopt;
        result += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return result;
}
