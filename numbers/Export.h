#ifndef ZULTAV_NUMBERS_EXPORT_H
#define ZULTAV_NUMBERS_EXPORT_H

/// Marks what tests and embedders may link against; a solver needs InitModule alone.
#define ZULTAV_NUMBERS_API __attribute__((visibility("default")))

#endif
