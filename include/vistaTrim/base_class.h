// The root of the public interfaces, and the count that their implementations share.
//
// Virtual operations are published: hosts call them by slot, so their order never changes
// and new ones go at the end.
#ifndef VISTATRIM_BASE_CLASS_H
#define VISTATRIM_BASE_CLASS_H

#include <atomic>
#include <cstdint>

#include "vistaTrim/export.h"

namespace vistaTrim {

// A counted object. Whoever creates one holds its first reference.
class VISTATRIM_API IBaseClass {
public:
    IBaseClass();
    IBaseClass(const IBaseClass& other);            // takes no state over
    IBaseClass& operator=(const IBaseClass& other); // copies nothing

protected:
    virtual ~IBaseClass(); // a host cannot delete through an interface

public:
    virtual void Release() = 0; // gives up one reference; the last one ends the object
    virtual void AddRef() = 0;  // takes one reference
};

// Forbids copying.
class CPolicyNoCopy {
public:
    CPolicyNoCopy() = default;
    CPolicyNoCopy(const CPolicyNoCopy&) = delete;
    CPolicyNoCopy& operator=(const CPolicyNoCopy&) = delete;
};

// The reference count of an implementation. Unchecked: a Release too many is the caller's fault.
class CRefCount : public CPolicyNoCopy {
public:
    CRefCount();
    virtual ~CRefCount();

protected:
    void TakeReference();
    void GiveUpReference(); // deletes the object when the count reaches 0

private:
    std::atomic<int32_t> RefCount;
};

} // namespace vistaTrim

#endif
