// Process-wide objects that outlive the statics of the library.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <new>

/// Room for one process-wide object that is built when this is and never destroyed, without the heap. For
/// static variables of functions, whose objects may still be asked for while the library is unloaded.
template <class T>
class qxNeverDestroyed
{
public:
    qxNeverDestroyed() { new (m_room) T; }

    T& get() { return *std::launder(reinterpret_cast<T*>(m_room)); }

private:
    alignas(T) unsigned char m_room[sizeof(T)];
};
