// SPDX-License-Identifier: see LICENSE

#include "qxserializedata.h"

#include "qxserializeadaptermemory.h"

#include <vector>

void qxSerializeData::pushBack(qxSerializeAdapter* adapter)
{
    std::vector<unsigned char> bytes(getDataSize(adapter));
    qxSerializeAdapterMemory written(bytes.data(), static_cast<unsigned int>(bytes.size()));
    written.setAdapterFlags(adapter->getAdapterFlags());
    written.setAdapterVersion(adapter->getAdapterVersion());

    write(&written);
    if (written.hasError()) {
        adapter->setError(written.getError());
        return;
    }
    adapter->pushBack(bytes.data(), written.getCurrentPos()); // the reported size may be more
}
