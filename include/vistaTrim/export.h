// Marks what the shared library exports; everything else has hidden visibility.
#ifndef VISTATRIM_EXPORT_H
#define VISTATRIM_EXPORT_H

#define VISTATRIM_API __attribute__((visibility("default")))

#endif
