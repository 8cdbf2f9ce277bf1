// Marks what the shared library shows to its hosts; everything else is built hidden.
#ifndef VISTATRIM_EXPORT_H
#define VISTATRIM_EXPORT_H

#define VISTATRIM_API __attribute__((visibility("default")))

#endif
