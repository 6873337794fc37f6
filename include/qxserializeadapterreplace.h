// A file that is replaced as a whole, or not at all.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapterfile.h"

/// Writes the new content of a file beside it and puts it in its place when all of it is on the disk: whoever
/// opens the file finds the old content or the new one, whole.
///
/// The file keeps its permissions; where the name is a symbolic link, the link stays. Other hard links keep
/// the old content.
///
/// Lifetime: without commit the destructor removes what was written and the file stays as it was.
/// Errors:   as for files; an error while writing makes commit fail.
class QX_API qxSerializeAdapterReplace : public qxSerializeAdapterFile
{
public:
    /// Opens a temporary file in the folder of `fileName`; the file itself need not exist.
    explicit qxSerializeAdapterReplace(const qxString& fileName);
    ~qxSerializeAdapterReplace() noexcept(false) override;

    /// Replaces the file and returns true. False when anything failed, also earlier; the error tells why.
    /// Nothing can be written afterwards.
    bool commit();

    /// The name of the file that is written, for programs that end in the middle; empty when there is none any more.
    const qxString& getTemporaryName() const { return m_temporary; }

    /// True when `fileName` is an ordinary file or nothing at all; false for directories, devices and pipes,
    /// which can only be written to.
    static bool canReplace(const qxString& fileName);

private:
    void drop();

    qxString m_temporary; // empty when there is none
};
