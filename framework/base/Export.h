#pragma once

/// Marks what a library offers to others; everything else is hidden by the build.
#define ZULTAV_BASE_API __attribute__((visibility("default")))
