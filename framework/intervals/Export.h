#ifndef ZULTAV_INTERVALS_EXPORT_H
#define ZULTAV_INTERVALS_EXPORT_H

/// Marks what users of libZULTavIntervals may link against; all else is hidden.
#define ZULTAV_INTERVALS_API __attribute__((visibility("default")))

#endif
