// The large buffers that file adapters pass on to each other.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// A process-wide store of buffers of qxSerializeAdapterFile::QUEUE_SIZE bytes; it keeps at most 8 idle ones.
///
/// Threads: any.
class qxFileBuffers
{
public:
    /// An idle buffer, or a new one; its content is arbitrary. Out of memory is reported and throws
    /// std::bad_alloc.
    static unsigned char* take();

    /// Gives a buffer back; null is ignored.
    static void giveBack(unsigned char* buffer);

    /// Frees the idle buffers.
    static void freeIdle();

    static unsigned int getIdleCount();
};
