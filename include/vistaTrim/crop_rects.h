// The list of crops that a request returns.
#ifndef VISTATRIM_CROP_RECTS_H
#define VISTATRIM_CROP_RECTS_H

#include <cstdint>
#include <vector>

#include "vistaTrim/base_class.h"
#include "vistaTrim/export.h"
#include "vistaTrim/records.h"
#include "vistaTrim/smart_ptr.h"

namespace vistaTrim {

// A read-only list that owns a copy of the records, shares nothing with the driver and may outlive
// it. The host frees it with Release, Destroy or a SmartPtr<CCropRects>.
class VISTATRIM_API ICropRects : public IBaseClass {
public:
    ICropRects();
    ICropRects(const ICropRects& other);
    ICropRects& operator=(const ICropRects& other);

protected:
    ~ICropRects() override;

public:
    virtual uint32_t Count() const = 0;
    virtual CInt32CropRect* Data() = 0; // Count() records; null for a list that never held one
    virtual void Destroy() = 0;         // destroys the object, whatever its count
};

// What a request's ICropRects* points at: cast it with static_cast to hold it in a
// SmartPtr<CCropRects>. Only the driver makes one. Its members are not exported; call them
// through the interface or the SmartPtr.
class CCropRects : public ICropRects, public CRefCount {
public:
    void Release() override;
    void AddRef() override;
    uint32_t Count() const override;
    CInt32CropRect* Data() override;
    void Destroy() override;

protected:
    CCropRects();
    ~CCropRects() override;

private:
    friend class CCropListBuilder;

    std::vector<CInt32CropRect> Records;
};

extern template class VISTATRIM_API SmartPtr<CCropRects>;

} // namespace vistaTrim

#endif
