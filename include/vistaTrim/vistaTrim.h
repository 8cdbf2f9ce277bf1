// Everything a host needs.
#ifndef VISTATRIM_VISTATRIM_H
#define VISTATRIM_VISTATRIM_H

#include "vistaTrim/base_class.h"
#include "vistaTrim/crop_rects.h"
#include "vistaTrim/driver.h"
#include "vistaTrim/export.h"
#include "vistaTrim/functions.h"
#include "vistaTrim/image.h"
#include "vistaTrim/parameters.h"
#include "vistaTrim/records.h"
#include "vistaTrim/smart_ptr.h"
#include "vistaTrim/version.h"

#endif
