#ifndef ZULTAV_SOLVER_EXPORT_H
#define ZULTAV_SOLVER_EXPORT_H

/// Marks what users of libZULTavAbstractTypes may link against; all else is hidden.
#define ZULTAV_TYPES_API __attribute__((visibility("default")))

#endif
