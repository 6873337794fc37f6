// SPDX-License-Identifier: see LICENSE

#include "text/qxtokenwindow.h"

#include "qxmessage.h"
#include "qxserializeadapter.h"
#include "serialize/qxadapterbytes.h"
#include "text/qxtokenscan.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace
{

constexpr unsigned short LINE_FEED = 10; // clang refuses character literals beside vectors
constexpr std::size_t BEHIND = 8;        // tokens that can be read behind the last
constexpr char16_t NO_TOKENS[BEHIND] = {0};
constexpr unsigned char MARK_UTF8[] = {0xEF, 0xBB, 0xBF};
constexpr unsigned char MARK_UTF16_LITTLE[] = {0xFF, 0xFE};
constexpr unsigned char MARK_UTF16_BIG[] = {0xFE, 0xFF};

struct IsLineFeed {
    qxTokenAnswers operator()(qxTokenVector tokens) const { return tokens == LINE_FEED; }
    bool operator()(unsigned short token) const { return token == LINE_FEED; }
};

struct IsLowSurrogate {
    qxTokenAnswers operator()(qxTokenVector tokens) const { return (tokens & 0xFC00) == 0xDC00; }
    bool operator()(unsigned short token) const { return (token & 0xFC00) == 0xDC00; }
};

std::size_t countLineFeeds(const char16_t* from, const char16_t* end)
{
    return qxCountTokens(from, end, IsLineFeed());
}

std::size_t countPairs(const char16_t* from, const char16_t* end)
{
    return qxCountTokens(from, end, IsLowSurrogate());
}

/// Behind the last line feed; null when there is none.
const char16_t* findLastLine(const char16_t* from, const char16_t* end)
{
    while (end > from) {
        if (*--end == u'\n') return end + 1;
    }
    return nullptr;
}

} // namespace

qxTokenView qxTokenWindow::emptyView()
{
    return {NO_TOKENS, NO_TOKENS, NO_TOKENS, 0, NOWHERE};
}

void qxTokenWindow::start(qxTokenView& view)
{
    view = emptyView();
    if (m_tokens) {
        m_tokens[0] = 0;
        view.buffer = view.current = view.end = m_tokens.get();
    }
    m_reached = 0;
    m_usedBytes = 0;
    m_blockPos = 0;
    m_blockBytes = 0;
    m_lent = nullptr;
    m_takenBegin = m_takenEnd = 0;
    m_isAtStart = true;
    m_isMarkedUTF16 = false;
    m_hasPairs = false;
    m_faultBegin = m_faultEnd = 0;
    m_bufferPlace = m_lastPlace = START;
    m_shiftedLine = NOWHERE;
}

bool qxTokenWindow::fill(qxSerializeAdapter& adapter, qxTokenView& view)
{
    const qxUInt64 position = view.bufferPos + static_cast<qxUInt64>(view.end - view.buffer);
    useTokens(adapter, m_blockBytes, position);
    if (m_isAtStart && m_detectsMark) readMark(adapter);
    makeRoom(view);
    if (!decodeBlock(adapter, view)) return false;
    m_isAtStart = false;
    return true;
}

void qxTokenWindow::release(qxSerializeAdapter& adapter, qxTokenView& view)
{
    const qxUInt64 position = view.bufferPos + static_cast<qxUInt64>(view.current - view.buffer);
    std::vector<unsigned char> back;
    if (position < m_blockPos) { // the bytes of these tokens were used up: they are made again
        const std::size_t tokens = static_cast<std::size_t>(m_blockPos - position);
        back.resize(qxMeasureSource(m_form, view.current, tokens));
        qxEncodeSource(m_form, view.current, tokens, back.data());
    } else {
        const auto tokens = static_cast<std::size_t>(position - m_blockPos);
        useTokens(adapter, qxMeasureSource(m_form, view.current - tokens, tokens), position);
    }
    if (m_takenEnd > m_takenBegin) {
        adapter.pushBack(m_taken.get() + m_takenBegin, static_cast<unsigned int>(m_takenEnd - m_takenBegin));
    }
    if (!back.empty()) adapter.pushBack(back.data(), static_cast<unsigned int>(back.size()));
    m_takenBegin = m_takenEnd = 0;
    m_lent = nullptr;
    m_blockBytes = 0;
    m_blockPos = position;
    view.end = view.current; // deliberate: what can be given back to the parser stays
    if (m_tokens) m_tokens[static_cast<std::size_t>(view.end - m_tokens.get())] = 0;
}

void qxTokenWindow::setForm(qxSerializeAdapter* adapter, qxTokenView& view, qxTokenForm form, bool detectMark)
{
    m_detectsMark = detectMark;
    if (m_isMarkedUTF16 || form == m_form) return;

    const qxUInt64 position = view.bufferPos + static_cast<qxUInt64>(view.current - view.buffer);
    if (adapter && position >= m_blockPos) {
        const auto tokens = static_cast<std::size_t>(position - m_blockPos);
        useTokens(*adapter, qxMeasureSource(m_form, view.current - tokens, tokens), position);
    }
    m_form = form;
    m_blockBytes = 0;
    if (!m_tokens) return;
    // Tokens that were given back from before the block stay as they were decoded.
    view.end = view.buffer + (std::max(position, m_blockPos) - view.bufferPos);
    m_tokens[static_cast<std::size_t>(view.end - m_tokens.get())] = 0;
}

qxUInt64 qxTokenWindow::reached(const qxTokenView& view)
{
    m_reached = std::max(m_reached, view.bufferPos + static_cast<qxUInt64>(view.current - view.buffer));
    return m_reached;
}

/// The first `bytes` of the block are used up; the next block starts at `position`.
void qxTokenWindow::useTokens(qxSerializeAdapter& adapter, std::size_t bytes, qxUInt64 position)
{
    if (m_lent && m_blockBytes > 0) {
        // Somebody else may have worked on the adapter since it lent these bytes; then they are no longer there.
        const std::span<const unsigned char> now =
            qxAdapterBytes::borrow(adapter, static_cast<unsigned int>(m_blockBytes));
        if (now.data() == m_lent && now.size() >= bytes)
            qxAdapterBytes::consume(adapter, static_cast<unsigned int>(bytes));
    } else {
        m_takenBegin += bytes;
    }
    m_lent = nullptr;
    m_blockBytes = 0;
    m_blockPos = position;
    m_usedBytes += bytes;
}

/// Makes room for a block behind the tokens: by forgetting what lies too far back, or by growing.
void qxTokenWindow::makeRoom(qxTokenView& view)
{
    const auto there = static_cast<std::size_t>(view.end - view.buffer);
    if (m_room - there >= BLOCK) return;

    const std::size_t held = view.holdPos >= view.bufferPos + there
                                 ? 0
                                 : there - static_cast<std::size_t>(view.holdPos - view.bufferPos);
    const std::size_t kept = std::min(there, std::max(m_history, held));
    if (kept > m_room / 2 || m_room - kept < BLOCK) {
        const std::size_t room = m_room == 0 ? kept + BLOCK : std::max(2 * kept, 2 * BLOCK);
        auto tokens = std::make_unique_for_overwrite<char16_t[]>(room + BEHIND);
        forget(view, there - kept);
        std::memcpy(tokens.get(), view.buffer, kept * sizeof(char16_t));
        m_tokens = std::move(tokens);
        m_room = room;
    } else {
        forget(view, there - kept);
        std::memmove(m_tokens.get(), view.buffer, kept * sizeof(char16_t));
    }
    view.buffer = m_tokens.get();
    view.current = view.end = m_tokens.get() + kept;
    m_tokens[kept] = 0;
}

/// Lets the oldest tokens go and takes over what they mean for line and column.
void qxTokenWindow::forget(qxTokenView& view, std::size_t tokens)
{
    if (tokens == 0) return;
    advance(m_bufferPlace, view, view.buffer + tokens);
    view.buffer += tokens;
    view.bufferPos += tokens;
}

void qxTokenWindow::readMark(qxSerializeAdapter& adapter)
{
    const struct {
        std::span<const unsigned char> bytes;
        qxTokenForm form;
    } marks[] = {{MARK_UTF8, qxTokenForm::UTF8},
                 {MARK_UTF16_LITTLE, qxTokenForm::UTF16_LITTLE},
                 {MARK_UTF16_BIG, qxTokenForm::UTF16_BIG}};
    for (const auto& mark : marks) {
        if (!startsWith(adapter, mark.bytes)) continue;
        m_form = mark.form;
        m_isMarkedUTF16 = mark.form != qxTokenForm::UTF8;
        m_isAtStart = false;
        return dropBytes(adapter, mark.bytes.size());
    }
}

bool qxTokenWindow::startsWith(qxSerializeAdapter& adapter, std::span<const unsigned char> mark)
{
    for (std::size_t i = 0; i < mark.size(); ++i) {
        std::span<const unsigned char> bytes = nextBytes(adapter);
        if (i >= bytes.size()) { // asked for only while what is there begins the mark
            if (bytes.empty() || !takeOneMore(adapter)) return false;
            bytes = nextBytes(adapter);
        }
        if (bytes[i] != mark[i]) return false;
    }
    return true;
}

void qxTokenWindow::dropBytes(qxSerializeAdapter& adapter, std::size_t count)
{
    if (m_takenEnd > m_takenBegin) {
        m_takenBegin += count;
    } else {
        qxAdapterBytes::consume(adapter, static_cast<unsigned int>(count));
    }
}

/// Decodes at least one token unless the input is at its end.
bool qxTokenWindow::decodeBlock(qxSerializeAdapter& adapter, qxTokenView& view)
{
    char16_t* const out = m_tokens.get() + (view.end - view.buffer);
    for (;;) {
        const std::span<const unsigned char> bytes = nextBytes(adapter);
        if (bytes.empty()) return false;
        const qxDecodeResult result = qxDecodeTokens(m_form, bytes.data(), bytes.size(), out, BLOCK);
        if (result.tokens > 0) {
            m_lent = m_takenEnd > m_takenBegin ? nullptr : bytes.data();
            m_blockBytes = result.bytes;
            m_hasPairs = m_hasPairs || result.hasPairs;
            out[result.tokens] = 0;
            view.end += result.tokens;
            return true;
        }
        if (result.stop == qxDecodeStop::SHORT && takeOneMore(adapter)) continue;
        m_lent = m_takenEnd > m_takenBegin ? nullptr : bytes.data();
        addFault(view);
        return true;
    }
}

/// One byte that begins no character becomes the token 0.
void qxTokenWindow::addFault(qxTokenView& view)
{
    m_blockBytes = 1;
    const qxUInt64 position = view.bufferPos + static_cast<qxUInt64>(view.end - view.buffer);
    if (position != m_faultEnd) m_faultBegin = position;
    m_faultEnd = position + 1;
    const auto index = static_cast<std::size_t>(view.end - view.buffer);
    m_tokens[index] = 0;
    m_tokens[index + 1] = 0;
    ++view.end;
    if (m_warns) qxMessage::message(QX_LEVEL_WARNING, "Utf lex encoding on faulty data set");
}

/// The bytes that come next, without taking any from an adapter that lends them; none at the end.
std::span<const unsigned char> qxTokenWindow::nextBytes(qxSerializeAdapter& adapter)
{
    if (m_takenEnd > m_takenBegin) return {m_taken.get() + m_takenBegin, m_takenEnd - m_takenBegin};
    const std::span<const unsigned char> lent = qxAdapterBytes::borrow(adapter, BLOCK);
    if (!lent.empty()) return lent;

    qxUInt64 there = adapter.length();
    if (there == 0) { // a stream that does not know: it is asked for one byte, so as not to wait for more
        if (!adapter.hasData()) return {};
        there = 1;
    }
    if (!m_taken) m_taken = std::make_unique_for_overwrite<unsigned char[]>(TAKEN_ROOM);
    const auto wanted = static_cast<unsigned int>(std::min<qxUInt64>(there, TAKEN_ROOM));
    m_takenBegin = 0;
    m_takenEnd = std::min(adapter.read(m_taken.get(), wanted), wanted);
    return {m_taken.get(), m_takenEnd};
}

/// Adds one byte to the few that are there, which from now on are the window's own.
bool qxTokenWindow::takeOneMore(qxSerializeAdapter& adapter)
{
    if (m_takenEnd == m_takenBegin) {
        const std::span<const unsigned char> lent = qxAdapterBytes::borrow(adapter, BLOCK);
        keepTaken(lent.data(), lent.size());
        qxAdapterBytes::consume(adapter, static_cast<unsigned int>(lent.size()));
    } else {
        keepTaken(m_taken.get() + m_takenBegin, m_takenEnd - m_takenBegin);
    }
    const std::span<const unsigned char> lent = qxAdapterBytes::borrow(adapter, 1);
    if (!lent.empty()) {
        m_taken[m_takenEnd++] = lent[0];
        qxAdapterBytes::consume(adapter, 1);
        return true;
    }
    if (adapter.length() == 0 && !adapter.hasData()) return false;
    m_taken[m_takenEnd++] = adapter.read();
    return true;
}

void qxTokenWindow::keepTaken(const unsigned char* bytes, std::size_t count)
{
    if (!m_taken) m_taken = std::make_unique_for_overwrite<unsigned char[]>(TAKEN_ROOM);
    std::memmove(m_taken.get(), bytes, count); // at most the bytes of one character that is cut off
    m_takenBegin = 0;
    m_takenEnd = count;
}

/// Moves `place`, which lies in the window, forward to `to`.
void qxTokenWindow::advance(Place& place, const qxTokenView& view, const char16_t* to) const
{
    const char16_t* from = view.buffer + (place.position - view.bufferPos);
    place.line += static_cast<unsigned int>(countLineFeeds(from, to));
    if (const char16_t* const lastLine = findLastLine(from, to)) {
        place.lineStart = view.bufferPos + static_cast<qxUInt64>(lastLine - view.buffer);
        place.pairs = 0;
        from = lastLine;
    }
    if (m_hasPairs) place.pairs += countPairs(from, to);
    place.position = view.bufferPos + static_cast<qxUInt64>(to - view.buffer);
}

/// The current token's place, counted from the last one asked for where that lies before it.
const qxTokenWindow::Place& qxTokenWindow::findPlace(const qxTokenView& view) const
{
    const qxUInt64 position = view.bufferPos + static_cast<qxUInt64>(view.current - view.buffer);
    if (m_lastPlace.position < view.bufferPos || m_lastPlace.position > position) m_lastPlace = m_bufferPlace;
    advance(m_lastPlace, view, view.current);
    return m_lastPlace;
}

unsigned int qxTokenWindow::getLine(const qxTokenView& view) const
{
    return findPlace(view).line;
}

unsigned int qxTokenWindow::getColumn(const qxTokenView& view) const
{
    const Place& place = findPlace(view);
    const auto column = static_cast<unsigned int>(place.position - place.lineStart - place.pairs) + 1;
    return place.lineStart == m_shiftedLine ? column + m_columnShift : column;
}

void qxTokenWindow::setLine(const qxTokenView& view, unsigned int line)
{
    const unsigned int shift = line - getLine(view);
    m_bufferPlace.line += shift;
    m_lastPlace.line += shift;
}

void qxTokenWindow::setColumn(const qxTokenView& view, unsigned int column)
{
    m_shiftedLine = NOWHERE;
    m_columnShift = column - getColumn(view);
    m_shiftedLine = findPlace(view).lineStart;
}
