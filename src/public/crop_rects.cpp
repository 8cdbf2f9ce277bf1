#include "vistaTrim/crop_rects.h"

#include <stdexcept>

namespace vistaTrim {

template class SmartPtr<CCropRects>;

CCropRects::CCropRects() = default;
CCropRects::~CCropRects() = default;

void CCropRects::Release()
{
    GiveUpReference();
}

void CCropRects::AddRef()
{
    TakeReference();
}

uint32_t CCropRects::Count() const
{
    return static_cast<uint32_t>(Records.size());
}

CInt32CropRect* CCropRects::Data()
{
    return Records.data();
}

void CCropRects::Destroy()
{
    CCropRects* volatile self = this; // null when a host calls the bare slot so: nothing happens
    delete self;
}

void CCropRects::Reserve(size_t count)
{
    if (count > Records.max_size())
        throw std::length_error("vector<T> too long");
    Records.reserve(count);
}

void CCropRects::Append(const CInt32CropRect& record)
{
    if (Records.size() == Records.max_size())
        throw std::length_error("vector<T> too long");
    Records.push_back(record);
}

} // namespace vistaTrim
