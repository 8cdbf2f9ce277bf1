#include "vistaTrim/base_class.h"

#include "vistaTrim/crop_rects.h"
#include "vistaTrim/driver.h"
#include "vistaTrim/image.h"

namespace vistaTrim {

// The interfaces have no state to copy.

IBaseClass::IBaseClass() = default;
IBaseClass::IBaseClass(const IBaseClass&)
{
}
IBaseClass& IBaseClass::operator=(const IBaseClass&)
{
    return *this;
}
IBaseClass::~IBaseClass() = default;

IImage::IImage() = default;
IImage::IImage(const IImage& other) : IBaseClass(other)
{
}
IImage& IImage::operator=(const IImage&)
{
    return *this;
}
IImage::~IImage() = default;

ICropRects::ICropRects() = default;
ICropRects::ICropRects(const ICropRects& other) : IBaseClass(other)
{
}
ICropRects& ICropRects::operator=(const ICropRects&)
{
    return *this;
}
ICropRects::~ICropRects() = default;

IVistaTrim::IVistaTrim() = default;
IVistaTrim::IVistaTrim(const IVistaTrim& other) : IBaseClass(other)
{
}
IVistaTrim& IVistaTrim::operator=(const IVistaTrim&)
{
    return *this;
}
IVistaTrim::~IVistaTrim() = default;

CRefCount::CRefCount() : RefCount(1)
{
}

CRefCount::~CRefCount() = default;

// Sequentially consistent in both: the thread that takes the count to 0 must see everything other
// threads wrote before dropping their references, and hosts rely on no weaker ordering.
void CRefCount::TakeReference()
{
    RefCount.fetch_add(1, std::memory_order_seq_cst);
}

void CRefCount::GiveUpReference()
{
    if (RefCount.fetch_sub(1, std::memory_order_seq_cst) == 1)
        delete this; // virtual: reaches the most derived destructor
}

} // namespace vistaTrim
