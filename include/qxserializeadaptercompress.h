// Compressed byte streams.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapterfilter.h"

/// The gzip file format: what is written is compressed into one member, what is read may be several members, one behind
/// the other, whose checksums and lengths must be right.
///
/// Both directions take about half a megabyte, however large the data is, and however much becomes of a few bytes:
/// who reads compressed data from outside counts what comes. A flush costs compression, since it begins a new block.
///
/// Errors: what is no gzip data, is damaged, ends too early or goes on with something else leaves an error with the
///         offset in the compressed data at which that was noticed.
class QX_API qxSerializeAdapterCompress : public qxSerializeAdapterFilter
{
public:
    static constexpr int DEFAULT_LEVEL = 6;

    /// When writing, `level` goes from 0, stored as it is, and 1, fast, to 9, small; others are taken for the nearest.
    explicit qxSerializeAdapterCompress(const qxRefPointer<qxSerializeAdapter>& stream,
                                        qxSerializeAction action, int level = DEFAULT_LEVEL);
    ~qxSerializeAdapterCompress() noexcept(false) override;

    QX_DECLARE_TYPE;

protected:
    void encode(const unsigned char* bytes, unsigned int count) override;
    void encodeFlush() override;
    void encodeEnd() override;
    unsigned int decode(unsigned char* buffer, unsigned int count) override;

private:
    struct State;

    void deflateAll(int mode);
    bool isAtMember();

    std::unique_ptr<State> m_state;
};
