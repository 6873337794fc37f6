// A document of settings.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"
#include "qxxmldom.h"

#include "settings/qxkeyindex.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The tree of a settings document, read and written so that everything in it survives.
class qxKeyTree final : public qxXmlDom
{
public:
    qxKeyTree();

    qxString onFunction(const qxString& argument, unsigned int level) override;
    unsigned char onWrite() override;
};

/// One value of a document.
struct qxKeyRow {
    std::string path; ///< without the root element when that is "registry"
    std::string name;
    std::string value;
};

/// Settings: elements nest as the parts of a path, which may begin at any depth; a value is the text of an element.
///
/// A path is looked for as it is given, then without a "/QuaxoSDK" at its end; its names first in the form in which they
/// are written here, then as they stand.
///
/// Threads: one at a time.
class qxKeyDocument
{
public:
    static constexpr std::size_t MOST_BYTES =
        16 * 1024 * 1024; ///< of a document; what is longer is no settings

    /// Without anything but a root element "registry".
    qxKeyDocument();

    /// Reads `adapter` to its end and takes its settings. False for what is too long or malformed.
    bool read(qxSerializeAdapter& adapter);

    /// Gives the value and returns true; false when there is none. `path` need not be normal and is not empty.
    bool get(const qxString& path, const qxString& name, qxString& value);

    /// Sets the value where it is, or where its path begins, or in the root element. False, and `error`, when that cannot
    /// be; the document may be changed in part then. `isChanged` is only ever set to true.
    bool set(const qxString& path, const qxString& name, const qxString& value, bool& isChanged,
             std::string& error);

    /// Removes the value wherever get would find it. False when there was none.
    bool remove(const qxString& path, const qxString& name, bool& isChanged, std::string& error);

    /// All values, sorted by path and name. Those whose path has more than 4,096 bytes are left out, and so is what would
    /// need more than 256 MiB in all.
    std::vector<qxKeyRow> getRows();

    /// The bytes of the document; false, and `error`, where it cannot be written. With `withIncludes` other documents that
    /// it includes become part of it.
    bool write(std::string& bytes, bool withIncludes, std::string& error);

private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const;
    };

    // What was asked for last, so that it need not be taken apart again.
    struct Known {
        bool isThere;
        std::string_view value; // in an item
    };
    typedef std::unordered_map<std::string, Known, TextHash, std::equal_to<>> Answers;

    static constexpr std::size_t MOST_ANSWERS = 16384;

    qxXmlItem* locate(const qxString& path, const qxString& name);
    qxXmlItem* locatePlain(const std::string& path, const qxString& name);
    qxXmlElement* make(const std::vector<std::string>& way);
    void changed();

    qxKeyTree m_tree;
    qxKeyIndex m_index;
    Answers m_answers;
    std::string m_question;
};
