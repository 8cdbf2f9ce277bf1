#include "vistaTrim/crop_rects.h"

#include <stdexcept>
#include <vector>

#include "public/crop_list_builder.h"

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
    CCropRects* volatile self = this; // null if a host calls the slot on null: nothing happens
    delete self;
}

CCropListBuilder::CCropListBuilder() : List(new CCropRects, false)
{
}

void CCropListBuilder::Reserve(size_t count)
{
    std::vector<CInt32CropRect>& records = List->Records;
    if (count > records.max_size())
        throw std::length_error("vector<T> too long");
    records.reserve(count);
}

void CCropListBuilder::Append(const CInt32CropRect& record)
{
    std::vector<CInt32CropRect>& records = List->Records;
    if (records.size() == records.max_size())
        throw std::length_error("vector<T> too long");
    records.push_back(record);
}

CCropRects* CCropListBuilder::Take()
{
    return List.release();
}

} // namespace vistaTrim
