// Requests of callers who did not read them from a checked command line.
#ifndef VISTATRIM_PHOTO_SUGGEST_CHECK_REQUEST_H
#define VISTATRIM_PHOTO_SUGGEST_CHECK_REQUEST_H

#include "vistaTrimPhoto/request.h"

namespace vistaTrim::photo {

// Throws PhotoError (InvalidRequest) for a value that no photograph could meet.
void CheckRequest(const Request& request);

} // namespace vistaTrim::photo

#endif
