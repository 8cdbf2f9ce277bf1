// A plane stack that frees its planes at the end of its scope, whatever ends the scope.
#ifndef VISTATRIM_NUMERIC_OWNED_STACK_H
#define VISTATRIM_NUMERIC_OWNED_STACK_H

#include "numeric/plane_stack.h"

namespace vistaTrim {

// Only this object releases what Create made. The base is private: callers reach the planes through
// a handle.
class COwnedStack : private CPlaneStack {
public:
    COwnedStack() = default;
    ~COwnedStack()
    {
        Release();
    }
    COwnedStack(const COwnedStack&) = delete;
    COwnedStack& operator=(const COwnedStack&) = delete;

    using CPlaneStack::Cols;
    using CPlaneStack::Create;
    using CPlaneStack::ElementCount;
    using CPlaneStack::FillFromBytes;
    using CPlaneStack::PlaneCount;
    using CPlaneStack::Planes;
    using CPlaneStack::Rows;

    // For functions that take a stack. They must not release it.
    CPlaneStack& Handle()
    {
        return *this;
    }
    const CPlaneStack& Handle() const
    {
        return *this;
    }
};

} // namespace vistaTrim

#endif
