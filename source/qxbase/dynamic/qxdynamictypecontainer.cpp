// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypecontainer.h"

#include "dynamic/qxdynamicelements.h"
#include "qxerror.h"
#include "qxserializeadapter.h"

#include <utility>

using Parts = qxDynamicParts;

namespace
{

constexpr unsigned int NOWHERE = ~0U;

void requireContainer(const qxDynamicType& value)
{
    if (Parts::kind(value) != QX_DYNAMIC_CONT)
        qxExceptionThrows::qxThrowFatal(
            "Can not convert dynamic argument type '%s' to qxDynamicTypeContainer !!",
            Parts::tag(value).text.data());
}

void requireName(const qxString& name)
{
    if (name.find('\0') != name.length())
        qxExceptionThrows::qxThrowFatal("A name in a qxDynamicTypeContainer holds a zero behind '%s'",
                                        name.getString());
}

// Goes to the last attribute of this name and gives its index, and how many objects those before it refer to.
unsigned int findAttribute(const qxDynamicType& container, const qxString& name, qxDynamicElement& found,
                           qxUInt64& objectsBefore)
{
    requireContainer(container);
    const std::string_view wanted(name.getString(), name.length());
    qxDynamicCursor cursor(Parts::bytes(container));
    qxUInt64 count = 0;
    cursor.takeVar(count);
    unsigned int index = NOWHERE;
    qxUInt64 objects = 0;
    for (unsigned int i = 0; i < count; ++i) {
        qxDynamicElement element;
        cursor.takeElement(element, true);
        if (element.name == wanted) {
            found = element;
            objectsBefore = objects;
            index = i;
        }
        objects += element.references;
    }
    return index;
}

unsigned int findIndex(const qxDynamicType& container, const qxString& name)
{
    qxDynamicElement found;
    qxUInt64 objects = 0;
    return findAttribute(container, name, found, objects);
}

void fail(qxSerializeAdapter& adapter, const char* format)
{
    const qxString text = qxMessage::translate(qxMessage::getDefaultSender(), format);
    adapter.setError(qxString::str(text, adapter.getName()));
}

} // namespace

qxDynamicTypeContainer::qxDynamicTypeContainer() : qxDynamicTypeContainer(nullptr, nullptr, 0) {}

qxDynamicTypeContainer::qxDynamicTypeContainer(const qxString* names, const qxDynamicType* values,
                                               std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) requireName(names[i]);
    qxPutDynamicElements(*this, QX_DYNAMIC_CONT, values, count, names);
}

qxDynamicTypeContainer::qxDynamicTypeContainer(const qxDynamicType& value) : qxDynamicType(value)
{
    requireContainer(value);
}

unsigned int qxDynamicTypeContainer::entries() const
{
    requireContainer(*this);
    qxUInt64 count = 0;
    qxDynamicCursor(Parts::bytes(*this)).takeVar(count);
    return static_cast<unsigned int>(count);
}

qxArray<qxString> qxDynamicTypeContainer::getNames() const
{
    requireContainer(*this);
    qxArray<qxString> names;
    qxGetDynamicElements(*this, &names);
    return names;
}

qxArray<qxDynamicType> qxDynamicTypeContainer::getValues() const
{
    requireContainer(*this);
    return qxGetDynamicElements(*this);
}

bool qxDynamicTypeContainer::hasAttribute(const qxString& name) const
{
    return findIndex(*this, name) != NOWHERE;
}

qxDynamicType qxDynamicTypeContainer::getAttribute(const qxString& name) const
{
    qxDynamicElement found;
    qxUInt64 objects = 0;
    if (findAttribute(*this, name, found, objects) == NOWHERE) return {};
    return qxGetDynamicElement(*this, found, objects);
}

void qxDynamicTypeContainer::setAttribute(const qxString& name, const qxDynamicType& value)
{
    requireName(name);
    const unsigned int index = findIndex(*this, name);
    qxArray<qxString> names;
    qxArray<qxDynamicType> values = qxGetDynamicElements(*this, &names);
    if (index == NOWHERE) {
        names.append(name);
        values.append(value);
    } else {
        values[index] = value;
    }
    qxPutDynamicElements(*this, QX_DYNAMIC_CONT, values.getData(), values.entries(), names.getData());
}

bool qxDynamicTypeContainer::removeAttribute(const qxString& name)
{
    const unsigned int index = findIndex(*this, name);
    if (index == NOWHERE) return false;
    qxArray<qxString> names;
    qxArray<qxDynamicType> values = qxGetDynamicElements(*this, &names);
    for (unsigned int i = index + 1; i < values.entries(); ++i) {
        names[i - 1] = std::move(names[i]);
        values[i - 1] = std::move(values[i]);
    }
    qxPutDynamicElements(*this, QX_DYNAMIC_CONT, values.getData(), values.entries() - 1, names.getData());
    return true;
}

void qxDynamicTypeContainer::read(qxSerializeAdapter* adapter)
{
    qxDynamicType::read(adapter);
    if (Parts::kind(*this) == QX_DYNAMIC_CONT) return;
    reset();
    fail(*adapter, "qxDynamicTypeContainer::read failure in adapter '%s' !");
}

void qxDynamicTypeContainer::pushBack(qxSerializeAdapter* adapter)
{
    fail(*adapter, "pushBack for qxDynamicTypeContainer is not possible to perform in adapter '%s' ");
}
