#ifndef ZULTAV_CALCULATOR_EXPORT_H
#define ZULTAV_CALCULATOR_EXPORT_H

/// Marks what users of libZULTavCalculator may link against; all else is hidden.
#define ZULTAV_CALCULATOR_API __attribute__((visibility("default")))

#endif
