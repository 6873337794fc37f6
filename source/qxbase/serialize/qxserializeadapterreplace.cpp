// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterreplace.h"

#include "platform/qxplatformfile.h"
#include "serialize/qxcuttext.h"

#include <string>

qxSerializeAdapterReplace::qxSerializeAdapterReplace(const qxString& fileName)
    : qxSerializeAdapterFile(fileName, Unopened())
{
    int error = 0;
    std::string temporary;
    qxPlatformFile* file = nullptr;
    if (!qxHasZeroByte(fileName)) file = qxPlatformFileTemporary(fileName.getString(), temporary, error);
    setFile(file, error);
    if (file) m_temporary = temporary.c_str();
}

qxSerializeAdapterReplace::~qxSerializeAdapterReplace() noexcept(false)
{
    drop();
}

bool qxSerializeAdapterReplace::commit()
{
    if (m_temporary.isEmpty()) return false;
    const bool isWritten = !hasError() && writeThrough();
    int error;
    if (!isWritten || !close()) {
        drop();
        return false;
    }
    const bool isReplaced = qxPlatformFileReplace(m_temporary.getString(), getFileName().getString(), error);
    if (!isReplaced) setFileError("Could not replace file '", error);
    drop();
    return isReplaced;
}

void qxSerializeAdapterReplace::drop()
{
    if (m_temporary.isEmpty()) return;
    close();
    int error;
    qxPlatformFileRemove(m_temporary.getString(), error); // after the replacement there is none to remove
    m_temporary.clear();
}

bool qxSerializeAdapterReplace::canReplace(const qxString& fileName)
{
    int error;
    return !qxHasZeroByte(fileName) && qxPlatformFileIsReplaceable(fileName.getString(), error);
}
