#include "wish_names.h"

#include <pybind11/pybind11.h>

namespace vistaTrim::python {

photo::WishKind WishKindOf(const std::string& name)
{
    using photo::WishKind;
    for (const WishKind kind :
         {WishKind::Keep, WishKind::MustKeep, WishKind::Avoid, WishKind::MustAvoid})
        if (name == photo::NameOf(kind))
            return kind;
    throw pybind11::value_error("no kind of wish is called " + name);
}

} // namespace vistaTrim::python
