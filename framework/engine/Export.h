#ifndef ZULTAV_ENGINE_EXPORT_H
#define ZULTAV_ENGINE_EXPORT_H

/// Marks what users of libZULTavEngine may link against; all else is hidden.
#define ZULTAV_ENGINE_API __attribute__((visibility("default")))

#endif
