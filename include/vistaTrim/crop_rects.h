// The list of crops that a request hands out.
#ifndef VISTATRIM_CROP_RECTS_H
#define VISTATRIM_CROP_RECTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vistaTrim/base_class.h"
#include "vistaTrim/export.h"
#include "vistaTrim/records.h"
#include "vistaTrim/smart_ptr.h"

namespace vistaTrim {

// A read-only list with its own copy of the records: it shares nothing with the driver and
// may outlive it. The host gives it up with Release, Destroy or a SmartPtr<CCropRects>.
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
    virtual void Destroy() = 0;         // ends the object whatever its count
};

// The implementation. Only the driver makes and fills one; hosts meet it as the T of
// SmartPtr<CCropRects>, by static_cast from the ICropRects* of a request.
class CCropRects : public ICropRects, public CRefCount {
public:
    CCropRects();
    ~CCropRects() override;

    void Release() override;
    void AddRef() override;
    uint32_t Count() const override;
    CInt32CropRect* Data() override;
    void Destroy() override;

    // Makes room for count records, so that appending them moves none.
    void Reserve(size_t count);
    // Copies the record to the end of the list. Throws what growing the list throws.
    void Append(const CInt32CropRect& record);

private:
    std::vector<CInt32CropRect> Records;
};

extern template class VISTATRIM_API SmartPtr<CCropRects>;

} // namespace vistaTrim

#endif
