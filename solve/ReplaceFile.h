#ifndef ZULTAV_SOLVE_REPLACE_FILE_H
#define ZULTAV_SOLVE_REPLACE_FILE_H

#include <string>

/// Gives the file these bytes. It is written beside, brought to the disk and renamed, so that
/// whatever happens there is the old file or the new one, whole. On failure the old one stays, the
/// answer is false and `reason` says why.
bool ReplaceFile(const std::string& file, const std::string& bytes, std::string& reason);

#endif
