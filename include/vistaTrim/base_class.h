// The root of the public interfaces, and the count that the library's own classes share.
//
// Virtual operations are published: hosts call them by slot, so none ever moves. A new one can only
// go at the end of IVistaTrim and ICropRects, which hosts call and do not implement. Adding one
// here would move the slots of every derived interface; images that hosts implement would lack one
// added to IImage.
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
    IBaseClass(const IBaseClass& other);            // there is no state to copy
    IBaseClass& operator=(const IBaseClass& other); // there is no state to copy

protected:
    virtual ~IBaseClass(); // a host cannot delete through an interface

public:
    virtual void Release() = 0; // drops one reference; dropping the last destroys the object
    virtual void AddRef() = 0;  // adds one reference
};

// Forbids copying.
class CPolicyNoCopy {
public:
    CPolicyNoCopy() = default;
    CPolicyNoCopy(const CPolicyNoCopy&) = delete;
    CPolicyNoCopy& operator=(const CPolicyNoCopy&) = delete;
};

// The reference count of the library's own objects, declared here because CCropRects has it. It is
// not exported: a host's own image keeps its own count. One Release too many is undefined.
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
