#ifndef ZULTAV_RELATIONS_EXPORT_H
#define ZULTAV_RELATIONS_EXPORT_H

/// Marks what this library exports; everything else is hidden.
#define ZULTAV_RELATIONS_API __attribute__((visibility("default")))

#endif
