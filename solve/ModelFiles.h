#ifndef ZULTAV_SOLVE_MODEL_FILES_H
#define ZULTAV_SOLVE_MODEL_FILES_H

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "framework/calculator/ZULTavIncludes.h"

/// Reads a file, or standard input by the name "-", but no more than the reader of models would
/// take. False, with the reason, where it cannot be read.
bool ReadTextFile(const std::string& name, std::size_t limit, std::string& text,
                  std::string& reason);

/// The files that a model may include: regular ones which, links followed, lie in its folder or in
/// one of those that the command line names.
class ModelFiles final : public ZULTavIncludes {
 public:
  /// @param model  the model's file; "-" is in the current folder
  /// False, with the reason, where one of the folders is none.
  bool Open(const std::string& model, const std::vector<std::string>& folders, std::string& reason);

  /// Looks beside the file `from`, then in the folders.
  bool Find(const std::string& name, const std::string& from, std::string& found,
            std::string& reason) override;
  std::string IdentityOf(const std::string& found) override;
  bool Read(const std::string& found, std::size_t limit, std::string& text,
            std::string& reason) override;

 private:
  using Path = std::filesystem::path;

  bool Resolve(const Path& candidate, std::string& reason);

  std::vector<Path> mFolders;             // as they were named
  std::vector<Path> mAllowed;             // without links
  std::map<std::string, Path> mResolved;  // of what was found
};

#endif
