#include "solve/ModelFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <system_error>

namespace {

/// Reads no more than the reader of models would take anyway.
bool ReadText(std::istream& in, std::size_t limit, std::string& text) {
  constexpr std::size_t kPiece = 1 << 16;
  for (std::size_t size = 0; size <= limit;) {
    text.resize(size + kPiece);
    in.read(text.data() + size, kPiece);
    size += static_cast<std::size_t>(in.gcount());
    text.resize(size);
    if (!in) return in.eof();
  }
  return true;
}

bool IsWithin(const std::filesystem::path& path, const std::filesystem::path& folder) {
  return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
         folder.end();
}

}  // namespace

bool ReadTextFile(const std::string& name, std::size_t limit, std::string& text,
                  std::string& reason) {
  errno = 0;
  if (name == "-") {
    if (ReadText(std::cin, limit, text)) return true;
    reason = "cannot read standard input";
    return false;
  }
  std::ifstream file(name, std::ios::binary);
  if (file && ReadText(file, limit, text)) return true;
  reason = "cannot read '" + name + "'";
  if (errno != 0) reason += std::string(": ") + std::strerror(errno);
  return false;
}

bool ModelFiles::Open(const std::string& model, const std::vector<std::string>& folders,
                      std::string& reason) {
  mFolders.assign(folders.begin(), folders.end());
  std::vector<Path> allowed = mFolders;
  const Path own = model == "-" ? Path() : Path(model).parent_path();
  allowed.push_back(own.empty() ? "." : own);
  for (const Path& folder : allowed) {
    std::error_code error;
    mAllowed.push_back(std::filesystem::canonical(folder, error));
    if (!error && !std::filesystem::is_directory(mAllowed.back(), error) && !error)
      error = std::make_error_code(std::errc::not_a_directory);
    if (!error) continue;
    reason = "cannot include from '" + folder.string() + "': " + error.message();
    return false;
  }
  return true;
}

bool ModelFiles::Find(const std::string& name, const std::string& from, std::string& found,
                      std::string& reason) {
  if (name.empty() || name.find('\0') != std::string::npos) {
    reason = "this is no name of a file";
    return false;
  }
  reason.clear();
  std::vector<Path> candidates = {Path(from).parent_path() / name};
  for (const Path& folder : mFolders) candidates.push_back(folder / name);
  std::string why;
  for (const Path& candidate : candidates) {
    if (Resolve(candidate, why)) {
      found = candidate.string();
      return true;
    }
    if (reason.empty()) reason = why;
  }
  return false;
}

/// Finds what a name means, links followed, and whether it may be included.
bool ModelFiles::Resolve(const Path& candidate, std::string& reason) {
  std::error_code error;
  const Path path = std::filesystem::canonical(candidate, error);
  const bool isFile = !error && std::filesystem::is_regular_file(path, error);
  const bool isAllowed = std::any_of(mAllowed.begin(), mAllowed.end(),
                                     [&](const Path& folder) { return IsWithin(path, folder); });
  if (error) {
    reason = error.message();
  } else if (!isAllowed) {
    reason = "it is outside of the model's folder, and of those that '--include DIR' allows";
  } else if (!isFile) {
    reason = "it is no regular file";
  } else {
    mResolved[candidate.string()] = path;
    return true;
  }
  return false;
}

std::string ModelFiles::IdentityOf(const std::string& found) {
  if (const auto known = mResolved.find(found); known != mResolved.end())
    return known->second.string();
  std::error_code error;
  const Path path = std::filesystem::canonical(found, error);
  return error ? found : path.string();
}

bool ModelFiles::Read(const std::string& found, std::size_t limit, std::string& text,
                      std::string& reason) {
  return ReadTextFile(mResolved.at(found).string(), limit, text, reason);
}
