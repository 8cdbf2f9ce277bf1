// The reason why a photograph could not be dealt with; the file's name is added by whoever
// reports it.
#ifndef VISTATRIM_HOST_PHOTO_ERROR_H
#define VISTATRIM_HOST_PHOTO_ERROR_H

#include <stdexcept>

namespace vistaTrim::host {

class PhotoError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace vistaTrim::host

#endif
