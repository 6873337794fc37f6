// Texts that refer to settings.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxbasicparser.h"

#include <memory>

/// Puts the values of settings where a text says `$(key)`.
///
/// What a key's value holds is not expanded again, and a `$(` without its `)` stays as it is, with all behind it.
class QX_API qxRegKeyExpandParser : public qxBasicParser
{
public:
    qxRegKeyExpandParser();
    ~qxRegKeyExpandParser() noexcept(false) override;

    /// The text expanded. When it would have more than 65,535 bytes the error "Too many characters in qxString" is set,
    /// and the answer empty.
    qxString parse(const qxString& text);

protected:
    /// The value of a key, empty when there is none. The base asks the settings of the user.
    virtual qxString getKey(const qxString& key);

    qxUInt64 saveState() override;
    void restoreState(qxUInt64 state, bool isFinal) override;

private:
    struct Pieces;

    qxParseResult fRegKey();
    qxParseResult fString();

    const std::unique_ptr<Pieces> m_pieces;
};
