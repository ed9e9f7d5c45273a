#ifndef ZULTAV_CALCULATOR_ZULTAV_INCLUDES_H
#define ZULTAV_CALCULATOR_ZULTAV_INCLUDES_H

#include <cstddef>
#include <string>

#include "framework/calculator/Export.h"

/// Gives the texts that models include by `include "name";`: the calculator itself opens no files.
/// Texts have names, which messages show; the model's own is the one that it is read under.
class ZULTAV_CALCULATOR_API ZULTavIncludes {
 public:
  virtual ~ZULTavIncludes() = default;
  /// Looks for what `name` means in the text `from`. False, with the reason, where there is nothing
  /// that may be included.
  virtual bool Find(const std::string& name, const std::string& from, std::string& found,
                    std::string& reason) = 0;
  /// What is equal for two names just when they mean the same text. Of one that was found, or of
  /// the model.
  virtual std::string IdentityOf(const std::string& found) = 0;
  /// Reads a text that was found; of a longer one than `limit` bytes at least one byte more. False,
  /// with the reason, where it cannot be read.
  virtual bool Read(const std::string& found, std::size_t limit, std::string& text,
                    std::string& reason) = 0;
};

#endif
