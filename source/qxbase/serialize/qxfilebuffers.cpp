// SPDX-License-Identifier: see LICENSE

#include "serialize/qxfilebuffers.h"

#include "core/qxprocessguard.h"
#include "qxmemory.h"
#include "qxserializeadapterfile.h"

namespace
{

constexpr unsigned int MAX_IDLE = 8;

struct Store {
    qxMutex lock; // guards what follows
    unsigned char* idle[MAX_IDLE];
    unsigned int count = 0;
};

Store& getStore()
{
    static Store& store = *new Store; // never destroyed: adapters may outlive the statics
    return store;
}

} // namespace

unsigned char* qxFileBuffers::take()
{
    {
        Store& store = getStore();
        const qxProcessGuard guard(store.lock);
        if (store.count > 0) return store.idle[--store.count];
    }
    void* const buffer = qx_malloc(qxSerializeAdapterFile::QUEUE_SIZE);
    if (!buffer) qxThrowBadAlloc(__FILE__, __LINE__);
    return static_cast<unsigned char*>(buffer);
}

void qxFileBuffers::giveBack(unsigned char* buffer)
{
    if (buffer) {
        Store& store = getStore();
        const qxProcessGuard guard(store.lock);
        if (store.count < MAX_IDLE) {
            store.idle[store.count++] = buffer;
            return;
        }
    }
    qx_free(buffer);
}

void qxFileBuffers::freeIdle()
{
    Store& store = getStore();
    const qxProcessGuard guard(store.lock);
    while (store.count > 0) qx_free(store.idle[--store.count]);
}

unsigned int qxFileBuffers::getIdleCount()
{
    Store& store = getStore();
    const qxProcessGuard guard(store.lock);
    return store.count;
}
