#ifndef ZULTAV_SEARCH_EXPORT_H
#define ZULTAV_SEARCH_EXPORT_H

/// Marks what users of libZULTavUtilities may link against; all else is hidden.
#define ZULTAV_UTILITIES_API __attribute__((visibility("default")))

#endif
