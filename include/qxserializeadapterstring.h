// A text as a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <string>

/// Reads the bytes of a text and appends to it what is written.
///
/// Errors: what is written beyond the 65,535 bytes of a string is not kept and leaves an error text; so does a read
///         of a single byte behind the end.
class QX_API qxSerializeAdapterString : public qxSerializeAdapter
{
public:
    static constexpr unsigned int MAX_LENGTH = qxString::MAX_LENGTH; ///< bytes

    explicit qxSerializeAdapterString(const qxString& text = qxString());
    ~qxSerializeAdapterString() noexcept(false) override;

    QX_DECLARE_TYPE;

    /// All of the text, what was read already too.
    qxString getText() const { return qxString(m_text.data(), m_text.size()); }

    /// Takes another text, of which nothing is read yet, and forgets shared objects.
    void setText(const qxString& text);

    unsigned char canSeek() override;

    /// Moves to what is read next; writing appends wherever that is. SEEK_FAILED, and an error, outside the text.
    qxUInt64 seek(qxInt64 offset, qxOriginPos origin) override;

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override;
    void write_imp(unsigned char byte) override;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override;
    unsigned char read_imp() override;
    qxUInt64 length_imp() override;

private:
    void fillWindow(unsigned int wanted) override;

    unsigned int getPosition() const;
    void setPosition(unsigned int position);

    std::string m_text; // at most MAX_LENGTH bytes; what is read next is where the window starts
};
