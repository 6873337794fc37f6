// SPDX-License-Identifier: see LICENSE

#include "text/qxlexstate.h"

#include "core/qxutf8scan.h"
#include "qxmessage.h"
#include "qxserializeadaptermemory.h"
#include "text/qxnumberscanner.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <typeinfo>

namespace
{

bool isAscii(const unsigned char* bytes, std::size_t count)
{
    unsigned int all = 0;
    for (std::size_t i = 0; i < count; ++i) all |= bytes[i];
    return all < 0x80;
}

/// Characters of UTF-8 without faults.
unsigned int countUTF8(const unsigned char* begin, const unsigned char* end)
{
    return static_cast<unsigned int>(
        std::count_if(begin, end, [](unsigned char byte) { return (byte & 0xC0) != 0x80; }));
}

} // namespace

void qxLexState::setEncoding()
{
    options.form = isUnicode ? isBigEndian ? qxTokenForm::UTF16_BIG : qxTokenForm::UTF16_LITTLE
                   : isUtf8  ? qxTokenForm::UTF8
                             : qxTokenForm::BYTE;
    forgetOpeners();
}

qxLexDataType qxLexState::readToken(qxSerializeAdapter& adapter, bool isCharacter)
{
    leaveToken();
    tokenForm = options.form;
    bool isRead = false;
    if (queue.empty() && options.maxCharacters == 0) {
        if (tokenForm == qxTokenForm::BYTE) isRead = readLent<qxTokenForm::BYTE>(adapter, isCharacter);
        if (tokenForm == qxTokenForm::UTF8) isRead = readLent<qxTokenForm::UTF8>(adapter, isCharacter);
    }
    if (!isRead) readStream(adapter, isCharacter);
    if (found.opener != 0) noteOpener(adapter);
    if (!found.isSimple && tokenForm != qxTokenForm::BYTE && found.type != QX_LEX_SPACE) reportFaults();
    return found.type;
}

/// Copies the token; most are so short that all of the room is copied faster than just their bytes.
inline void qxLexState::keep(std::span<const unsigned char> lent)
{
    if (found.size > SHORT_TOKEN || lent.size() < SHORT_TOKEN || bytes.size() < SHORT_TOKEN) [[unlikely]] {
        bytes.assign(lent.data(), lent.data() + found.size);
        if (bytes.size() < SHORT_TOKEN) bytes.resize(SHORT_TOKEN);
    } else {
        std::memcpy(bytes.data(), lent.data(), SHORT_TOKEN);
    }
}

/// Reads a token where it lies; false when the bytes that are lent do not tell where it ends.
template <qxTokenForm FORM>
bool qxLexState::readLent(qxSerializeAdapter& adapter, bool isCharacter)
{
    const auto isKnown = [&](unsigned char opener) { return isKnownOpen(opener, adapter, 0); };
    for (unsigned int wanted = BLOCK;; wanted = MAX_TOKEN) {
        const std::span<const unsigned char> lent = qxAdapterBytes::borrow(adapter, wanted);
        if (lent.empty()) return false;
        qxLexSpanSource<FORM> in(lent);
        qxLexScanner(in, options, isKnown, found).run(isCharacter);
        if (in.isCut()) [[unlikely]] {
            // Only of memory it is known without asking that nothing comes behind what it lends.
            if (typeid(adapter) != typeid(qxSerializeAdapterMemory)) return false;
            if (lent.size() == BLOCK && wanted == BLOCK) continue;
            if (in.isCharacterCut()) return false;
        }
        keep(lent);
        qxAdapterBytes::consume(adapter, found.size);
        adapterBytes = found.size;
        position += found.size;
        return true;
    }
}

void qxLexState::readStream(qxSerializeAdapter& adapter, bool isCharacter)
{
    const unsigned int maxCharacters = isCharacter ? 1 : options.maxCharacters;
    qxLexStreamSource in(adapter, tokenForm, queue, bytes, maxCharacters);
    const auto isKnown = [&](unsigned char opener) {
        return queue.empty() && isKnownOpen(opener, adapter, in.getTakenBytes());
    };
    qxLexScanner(in, options, isKnown, found).run(isCharacter);
    adapterBytes = in.finish(found.size);
    position += adapterBytes;
    if (adapterBytes != found.size) found.opener = 0; // what the queue held is no part of the adapter
}

/// `taken` counts bytes of the token that are no longer the adapter's.
bool qxLexState::isKnownOpen(unsigned char opener, qxSerializeAdapter& adapter, qxUInt64 taken)
{
    const Unclosed& unclosed = unclosedOf(opener);
    return unclosed.adapter == &adapter && position < unclosed.until &&
           position + taken + adapter.length() == unclosed.total;
}

void qxLexState::noteOpener(qxSerializeAdapter& adapter)
{
    unclosedOf(found.opener) = {&adapter, position - adapterBytes + found.examined,
                                position + adapter.length()};
}

void qxLexState::forgetOpeners()
{
    for (Unclosed& unclosed : m_unclosed) unclosed = {};
}

void qxLexState::reportFaults()
{
    if (tokenForm == qxTokenForm::UTF8 && isAscii(bytes.data(), found.size)) return;
    unsigned int faults = 0;
    forEachCharacter([&](unsigned int, const qxLexCharacter& character) { faults += character.isFault; }, 0,
                     found.size);
    hasFaults = faults != 0;
    for (; faults > 0; --faults) qxMessage::message(QX_LEVEL_WARNING, "Utf lex encoding on faulty data set");
}

void qxLexState::leaveToken()
{
    if (found.isSimple)
        column += tokenForm >= qxTokenForm::UTF16_LITTLE ? found.size / 2 : found.size;
    else
        advancePlace();
    found.size = 0; // the rest is set by whoever reads the next
    found.isSimple = true;
    hasFaults = false;
}

void qxLexState::advancePlace()
{
    if (hasFaults || tokenForm >= qxTokenForm::UTF16_LITTLE) {
        return forEachCharacter(
            [this](unsigned int, const qxLexCharacter& character) {
                column = character.code == '\n' ? 1 : column + 1;
                line += character.code == '\n';
            },
            0, found.size);
    }
    const unsigned char* begin = bytes.data();
    const unsigned char* const end = begin + found.size;
    for (const unsigned char* feed = begin; (feed = std::find(begin, end, '\n')) != end; begin = feed + 1) {
        ++line;
        column = 1;
    }
    column += tokenForm == qxTokenForm::BYTE ? static_cast<unsigned int>(end - begin) : countUTF8(begin, end);
}

unsigned int qxLexState::countCharacters() const
{
    if (tokenForm == qxTokenForm::BYTE) return found.size;
    if (tokenForm == qxTokenForm::UTF8 && !hasFaults)
        return countUTF8(bytes.data(), bytes.data() + found.size);
    unsigned int count = 0;
    forEachCharacter([&](unsigned int, const qxLexCharacter&) { ++count; }, 0, found.size);
    return count;
}

double qxLexState::getReal() const
{
    std::string digits;
    const auto add = [&](unsigned int at, const qxLexCharacter& character) {
        digits += at != 0 && at == found.decimal ? '.' : static_cast<char>(character.code);
    };
    forEachCharacter(add, 0, found.size);
    const char* const end = digits.data() + digits.size();
    return qxDoubleOf(qxScanNumber(digits.data(), end, '.')) + 0.0; // so that a zero has no sign
}

qxString qxLexState::getText(unsigned int begin, unsigned int end) const
{
    std::string text;
    const unsigned char* source = bytes.data() + begin;
    std::size_t size = end - begin;
    if ((tokenForm == qxTokenForm::UTF8 && !hasFaults) ||
        (tokenForm == qxTokenForm::BYTE && isAscii(source, size))) {
        if (size <= qxString::MAX_LENGTH) return {reinterpret_cast<const char*>(source), size};
        size = qxString::MAX_LENGTH + 1; // enough to be cut
        text.assign(reinterpret_cast<const char*>(source), size);
    } else {
        const auto add = [&](unsigned int, const qxLexCharacter& character) {
            char encoded[6];
            if (text.size() <= qxString::MAX_LENGTH)
                text.append(encoded, qxWriteUTF8(encoded, character.code));
        };
        forEachCharacter(add, begin, end);
    }
    if (text.size() > qxString::MAX_LENGTH) {
        std::size_t cut = qxString::MAX_LENGTH;
        while (cut > 0 && (text[cut] & 0xC0) == 0x80) --cut;
        text.resize(cut);
        qxMessage::message(QX_LEVEL_WARNING, "The text of a token is cut at %d bytes", qxString::MAX_LENGTH);
    }
    return {text.data(), text.size()};
}

void qxLexState::giveBack(qxSerializeAdapter& adapter)
{
    if (found.size == 0) return;
    if (queue.empty()) {
        adapter.pushBack(bytes.data(), found.size);
        // Characters out of the queue were not the adapter's: what was known of its rest counts no longer.
        if (adapterBytes == found.size) position -= found.size;
    } else {
        std::vector<unsigned int> characters;
        const auto add = [&](unsigned int, const qxLexCharacter& character) {
            characters.push_back(character.code);
        };
        forEachCharacter(add, 0, found.size);
        queue.insert(queue.begin(), characters.begin(), characters.end());
    }
    found = {};
    hasFaults = false;
}

void qxLexState::giveBack(qxSerializeAdapter& adapter, unsigned int character)
{
    const bool isLast = found.size != 0 && countCharacters() == 1 &&
                        qxDecodeCharacter(tokenForm, bytes.data(), found.size).code == character;
    if (isLast) return giveBack(adapter);
    if (!queue.empty()) {
        queue.insert(queue.begin(), character);
        return;
    }
    unsigned char encoded[4];
    adapter.pushBack(encoded, qxEncodeCharacter(options.form, character, encoded));
}
