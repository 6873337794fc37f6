// Data on standard output.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// A stream or file could not be opened, read or written; the text says which and why.
class qxFileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Writes `text` to standard output; raises qxFileError when that fails.
void writeOutput(std::string_view text);

/// Writes out what the C library still holds; raises qxFileError when that fails.
void flushOutput();

/// `text` in double quotes, with `\"`, `\\`, `\n`, `\r`, `\t` and `\xHH` for other control characters.
std::string quote(std::string_view text);

inline std::string_view viewOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

inline const char* flagText(bool flag)
{
    return flag ? "true" : "false";
}

/// Collects what is written to it, so that a document which fails half-way shows nothing.
class qxOutputBuffer : public qxSerializeAdapter
{
public:
    std::string_view getText() const { return {m_bytes.data(), m_bytes.size()}; }

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override;
    void write_imp(unsigned char byte) override;
    using qxSerializeAdapter::read_imp;
    unsigned char read_imp() override;

private:
    std::vector<char> m_bytes;
};
