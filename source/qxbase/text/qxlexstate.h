// What a lexer is set to and the token that it read last.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "text/qxlexscan.h"
#include "text/qxlexsource.h"

#include <vector>

struct qxLexState {
    static constexpr unsigned int BLOCK = 65536;        // bytes that are borrowed at once
    static constexpr unsigned int MAX_TOKEN = 16777216; // bytes
    static constexpr unsigned int SHORT_TOKEN = 16;     // bytes that are copied at once

    void setEncoding();

    /// To be called when other closers may count from now on.
    void forgetOpeners();

    /// Returns the type of the token.
    qxLexDataType readToken(qxSerializeAdapter& adapter, bool isCharacter);
    void giveBack(qxSerializeAdapter& adapter);
    void giveBack(qxSerializeAdapter& adapter, unsigned int character);

    /// Makes the place that of the next token.
    void leaveToken();

    unsigned int countCharacters() const;
    double getReal() const;

    /// Of this part of the token, in UTF-8; cut where it is too long for a string, with a warning.
    qxString getText(unsigned int begin, unsigned int end) const;

    /// Calls `each` with the offset and the character.
    template <class Each>
    void forEachCharacter(Each&& each, unsigned int begin, unsigned int end) const
    {
        for (unsigned int at = begin; at < end;) {
            const qxLexCharacter character = qxDecodeCharacter(tokenForm, bytes.data() + at, end - at);
            each(at, character);
            at += character.size;
        }
    }

    qxLexOptions options;
    bool isUnicode = false;
    bool isBigEndian = false;
    bool isUtf8 = false;

    // The token
    qxLexFound found;
    std::vector<unsigned char> bytes;          // and perhaps others behind
    qxTokenForm tokenForm = qxTokenForm::BYTE; // of the bytes; the options may have changed since
    unsigned int adapterBytes = 0;             // all but those of queued characters
    bool hasFaults = false;
    unsigned int line = 1;
    unsigned int column = 1;

    std::vector<unsigned int> queue;
    qxUInt64 position = 0; // bytes of adapters that were read

private:
    /// An opener that is not closed before the position `until` is remembered, lest many of them look through the same
    /// bytes again and again. It counts while nobody else has worked on the adapter.
    struct Unclosed {
        const qxSerializeAdapter* adapter = nullptr;
        qxUInt64 until = 0;
        qxUInt64 total = 0; // position and length of the adapter
    };

    Unclosed& unclosedOf(unsigned char opener)
    {
        return m_unclosed[opener == '"' ? 0 : opener == '\'' ? 1 : 2];
    }

    template <qxTokenForm FORM>
    bool readLent(qxSerializeAdapter& adapter, bool isCharacter);
    void keep(std::span<const unsigned char> lent);
    void readStream(qxSerializeAdapter& adapter, bool isCharacter);
    bool isKnownOpen(unsigned char opener, qxSerializeAdapter& adapter, qxUInt64 taken);
    void noteOpener(qxSerializeAdapter& adapter);
    void reportFaults();
    void advancePlace();

    Unclosed m_unclosed[3]; // of double quotes, single quotes and brackets
};
