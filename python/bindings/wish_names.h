// Finds a kind of wish by name.
#ifndef VISTATRIM_PYTHON_WISH_NAMES_H
#define VISTATRIM_PYTHON_WISH_NAMES_H

#include <string>

#include "vistaTrimPhoto/region.h"

namespace vistaTrim::python {

photo::WishKind WishKindOf(const std::string& name); // throws ValueError for any other name

} // namespace vistaTrim::python

#endif
