// How an application reads and writes what is its own in XML documents.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmlsax.h"

// A handler is registered with qxXmlSax for the names of elements, or for the names that elements "qxDyn" and "qxObj"
// give what is in them.
//
// To read it gets `content`, what stands between the tags, as UTF-8 and with all markup as it stands; `reader` knows the
// element, its attributes (with references as they stand) and useBase64. A refusal lets the content be read as any other.
// Content of more characters than the reader's getMaxBufferSize is not offered.
//
// To write it finds the start tag open, may add attributes and then content; what it leaves open is closed.
//
// Lifetime: the registries keep the pointer only.
// Threads:  called on the thread that reads or writes; one handler may serve several threads at once.

/// Handles custom data: the elements of the names for which it is registered.
class QX_API qxXmlCustomDataInterface
{
public:
    virtual ~qxXmlCustomDataInterface();

    /// The data, or null as a refusal.
    virtual qxReference* readCustomData(const qxXmlSax& reader, qxSerializeAdapter& content) = 0;
    virtual void writeCustomData(qxXmlSax& writer, qxReference& data) = 0;
};

/// Handles dynamic values in a form of its own. What it refuses has the library's form.
class QX_API qxXmlDynamicTypeInterface
{
public:
    virtual ~qxXmlDynamicTypeInterface();

    /// Sets `value`; false is a refusal.
    virtual bool readDynamicType(const qxXmlSax& reader, qxSerializeAdapter& content,
                                 qxDynamicType& value) = 0;

    /// False, with nothing written, is a refusal.
    virtual bool writeDynamicType(qxXmlSax& writer, const qxDynamicType& value) = 0;
};

/// Handles objects: elements "qxObj".
class QX_API qxXmlObjectInterface
{
public:
    virtual ~qxXmlObjectInterface();

    /// The object, or null as a refusal.
    virtual qxObject* readObject(const qxXmlSax& reader, qxSerializeAdapter& content) = 0;
    virtual void writeObject(qxXmlSax& writer, qxObject& object) = 0;
};
