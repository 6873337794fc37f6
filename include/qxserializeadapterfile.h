// A file as a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

struct qxPlatformFile;

/// Reads or writes one file through a queue of 1,000,000 bytes.
///
/// A file that could not be opened has an error text, no data, and keeps nothing that is written to it.
/// Written data is on the disk after flush and after the destructor; what the queue hands on by itself
/// meanwhile waits for the next of these.
///
/// Lifetime: the file is closed by the destructor, which sends a warning when the last bytes are lost.
/// Errors:   stored on the adapter. Reading a file that is open for writing, or the reverse, raises
///           qxWarningError; reading a single byte beyond the end raises qxFatalError.
class QX_API qxSerializeAdapterFile : public qxSerializeAdapter
{
public:
    static constexpr unsigned int QUEUE_SIZE = 1000000; ///< bytes

    /// Flag: the name is not looked up in the search path.
    static constexpr qxUInt64 NO_SEARCH = 0x10;

    /// Opens the file: QX_SERIALIZE_OUTPUT empties it first, unless `update` is set; then, and with
    /// QX_SERIALIZE_APPEND, it keeps its content and writing appends. An empty name opens nothing and is no
    /// error. The URL base becomes the folder of the file.
    explicit qxSerializeAdapterFile(const qxString& fileName, qxSerializeAction action = QX_SERIALIZE_INPUT,
                                    unsigned char update = 0, qxUInt64 flags = 0);
    ~qxSerializeAdapterFile() noexcept(false) override;

    QX_DECLARE_TYPE;

    /// 1 when reading; when writing, whether the file was opened to be updated.
    unsigned char canSeek() override;

    /// 1 switches large chunks off, 0 on.
    void setSeekMode(unsigned char mode) override;

    /// Returns the position it moved to and gives up the bytes given back; 0 on failure. Only the low 32 bits
    /// of the position are used: beyond 4 GiB a warning is sent. A position before the start fails.
    qxUInt64 seek(qxInt64 offset, qxOriginPos origin) override;
    unsigned char supportAction(qxSerializeAction action) override;

    /// When writing, waits until the data is on the disk and goes to the end of the file. When reading, only
    /// the bytes given back are dropped.
    void flush() override;

    /// Whether small reads take a whole queue from the file (the start) or only what is asked for.
    void readLargeChunks(unsigned char mode) { m_largeChunks = mode; }
    unsigned char readLargeChunks() const { return m_largeChunks; }

    const qxString& getFileName() const { return m_fileName; }

    /// Frees the idle buffers that the adapters of the process share. Any thread may call it.
    static void cleanUpLargeFiles();

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override;
    void write_imp(unsigned char byte) override;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override;
    unsigned char read_imp() override;

    /// When reading, bytes not read yet; when writing, the length that the file will have.
    qxUInt64 length_imp() override;

public:
    /// Goes to `position`, bytes from the start, and returns 1; 0 on failure.
    virtual unsigned char reset(unsigned int position);

protected:
    struct Unopened {};

    /// For adapters that open in their own way: for writing, no file yet.
    qxSerializeAdapterFile(const qxString& fileName, Unopened);

    /// Takes `file` over; null could not be opened, for the reason `systemError`.
    void setFile(qxPlatformFile* file, int systemError);

    /// Writes the queue to the file and waits until it is on the disk; false, and an error, when that failed.
    bool writeThrough();

    /// Drops what the queue holds and closes the file; false, and an error, when written data was lost.
    bool close();

    /// Sets `text`, translated, the name and the system's description of the error as the error.
    void setFileError(const char* text, int systemError);

private:
    void fillWindow(unsigned int wanted) override;

    void open();
    void finish();
    void release();
    unsigned int getQueued() const { return static_cast<unsigned int>(m_queueEnd - m_window.next); }
    void emptyQueue() { setQueue(m_buffer, m_buffer); }
    void setQueue(const unsigned char* next, unsigned char* end);
    void takeBuffer();
    unsigned int takeQueued(unsigned char* buffer, unsigned int count);
    unsigned int readFile(unsigned char* buffer, unsigned int count);
    void fillQueue(unsigned int count);
    void requireInput() const;
    void requireOutput() const;
    void append(const unsigned char* bytes, unsigned int count);
    bool writeFile(const unsigned char* bytes, unsigned int count, unsigned int& written);
    bool writeQueue();
    void writeQueueAndGoToEnd();

    unsigned char* m_buffer = nullptr;   // QUEUE_SIZE bytes of the pool once it is needed
    unsigned char* m_queueEnd = nullptr; // the queue is from where the window starts to here
    qxString m_fileName;
    qxSerializeAction m_action;
    qxPlatformFile* m_file = nullptr;
    qxUInt64 m_count = 0; // reading: bytes not yet in the queue; writing: bytes in the file before the queue
    unsigned char m_largeChunks = 1;
    unsigned char m_update = 0;
    bool m_isUnsynced = false; // something was written that the disk may not have yet
};
