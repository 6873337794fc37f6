// Names of the library's classes and its plain value types, for headers that only point at them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

class qxArgument;
class qxBaseError;
class qxEvent;
class qxGUID;
class qxMessageReceiverInterface;
class qxMessageTranslatorInterface;
class qxMutex;
class qxReadWriteMutex;
class qxReference;
class qxSerializeAdapter;
class qxSerializeData;
class qxString;
class qxType;
template <class T>
class qxRefPointer;
template <class T>
class qxList;
template <class T>
class qxRefList;
template <class Key, class Data>
class qxDict;
template <class Key, class Data>
class qxRefDict;
template <class T>
class qxArray;
template <class T>
class qxDynamicArray;

/// What holders do with an object when they are copied: 0 clones it, every other value shares it.
enum qxCopyMode : unsigned int {
    QX_COPY_DEEP = 0,  ///< a copied holder takes a clone
    QX_COPY_SHARED = 1 ///< a copied holder takes the same object
};

/// The level of a message in bits 12 to 15, flags in bits 8 to 11; see qxMessage.
typedef unsigned int qxMessageLevel;

/// Message flags that an error carries until it is reported; see qxBaseError.
typedef unsigned int qxMessageEncoding;

/// Raises a fatal error whose format is "Template-" followed by `text`; for misuse of container templates.
[[noreturn]] QX_API void throwFatalTemplateError(const char* text);
