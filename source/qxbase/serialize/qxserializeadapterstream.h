// What has no size, such as a pipe or a terminal, as a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <memory>

struct qxPlatformFile;

/// Reads or writes a pipe, a terminal or a device through a buffer of 64 KiB.
///
/// Reading takes what is there: hasData waits for the first byte, and length tells how many came with it. A read of
/// more waits until they are there, or the end. What is written is handed on when the buffer is full, by flush and
/// by the destructor.
///
/// Lifetime: the destructor closes the file; it sends a warning when the last bytes could not be written.
/// Errors:   stored on the adapter; after a failure to write nothing more is written.
class qxSerializeAdapterStream final : public qxSerializeAdapter
{
public:
    /// Standard input when reading, standard output or errors when writing.
    static qxRefPointer<qxSerializeAdapter> openStandard(const qxString& url, qxSerializeAction action,
                                                         bool isErrors);

    /// The pipe or device at `path`, for reading.
    static qxRefPointer<qxSerializeAdapter> openDevice(const qxString& path);

    ~qxSerializeAdapterStream() noexcept(false) override;

    unsigned char supportAction(qxSerializeAction action) override;
    void flush() override;

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override;
    void write_imp(unsigned char byte) override;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override;
    unsigned char read_imp() override;
    qxUInt64 length_imp() override;
    unsigned char hasData_imp() override;

private:
    /// Takes `file` over; null could not be opened, for the reason `systemError`.
    qxSerializeAdapterStream(const qxString& name, qxSerializeAction action, qxPlatformFile* file,
                             int systemError);

    void fillWindow(unsigned int wanted) override;

    bool isReading() const { return m_action == QX_SERIALIZE_INPUT; }
    bool writeOut();
    bool hand(const unsigned char* bytes, unsigned int count);
    void setSystemError(const char* text, int systemError);

    const qxSerializeAction m_action;
    qxPlatformFile* m_file;
    std::unique_ptr<unsigned char[]> m_buffer; // what is read or written lies where the window is
    bool m_isDone = false;                     // at the end, or it failed
};
