// What is written to it, as a text.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <string>

/// Keeps what is written to it.
class qxTextSink final : public qxSerializeAdapter
{
public:
    std::string text;

protected:
    using qxSerializeAdapter::read_imp;
    unsigned char read_imp() override { return 0; } // never read
    void write_imp(unsigned char byte) override { text += static_cast<char>(byte); }
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        text.append(reinterpret_cast<const char*>(bytes), count);
    }
};
