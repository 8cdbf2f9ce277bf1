// The version of these headers. The library's SONAME carries the major number: a host built against
// one major number runs with every later library of the same number.
#ifndef VISTATRIM_VERSION_H
#define VISTATRIM_VERSION_H

#define VISTATRIM_VERSION_MAJOR 1
#define VISTATRIM_VERSION_MINOR 0
#define VISTATRIM_VERSION_PATCH 0

// The version as one number, for comparisons: 10203 is 1.2.3.
#define VISTATRIM_VERSION                                                                          \
    (VISTATRIM_VERSION_MAJOR * 10000 + VISTATRIM_VERSION_MINOR * 100 + VISTATRIM_VERSION_PATCH)

#define VISTATRIM_VERSION_STRING "1.0.0"

#endif
