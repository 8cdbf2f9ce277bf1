// A stack whose planes end with its scope, whatever ends the scope.
#ifndef VISTATRIM_ANALYSIS_OWNED_STACK_H
#define VISTATRIM_ANALYSIS_OWNED_STACK_H

#include "numeric/plane_stack.h"

namespace vistaTrim {

// The stages make their scratch with Create. A list that fails to grow throws through them,
// and a plain stack would leave its planes behind. Handles and views are plain CPlaneStacks.
class COwnedStack : public CPlaneStack {
public:
    COwnedStack() = default;
    ~COwnedStack()
    {
        GiveBack();
    }
    COwnedStack(const COwnedStack&) = delete;
    COwnedStack& operator=(const COwnedStack&) = delete;

    // The end before the end of the scope. A second call does nothing.
    void GiveBack()
    {
        if (!Planes.empty())
            Release();
    }
};

} // namespace vistaTrim

#endif
