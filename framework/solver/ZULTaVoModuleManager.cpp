#include "framework/solver/ZULTaVoModuleManager.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <mutex>

namespace {

using InitModuleFunction = int (*)(ZULTaVoModule*, ZULTaVoModuleManager*);
constexpr char kEntry[] = "InitModule";

/// A module is asked for by a plain name; a path would bypass the search path.
bool IsPlainName(const std::string& name) {
  return !name.empty() && name.size() <= 128 &&
         std::all_of(name.begin(), name.end(),
                     [](unsigned char c) { return std::isalnum(c) || c == '_' || c == '-'; });
}

/// The directory of this library.
std::string OwnDirectory() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&OwnDirectory), &info) == 0 || info.dli_fname == nullptr)
    return {};
  const std::string path = info.dli_fname;
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

/// The entry that the library itself exports; one of a library that it links to does not count.
InitModuleFunction FindEntry(void* handle) {
  void* symbol = dlsym(handle, kEntry);
  const link_map* map = nullptr;
  Dl_info info{};
  if (symbol == nullptr || dladdr(symbol, &info) == 0 || dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0)
    return nullptr;
  const std::string owner = info.dli_fname != nullptr ? info.dli_fname : "";
  return owner == map->l_name ? reinterpret_cast<InitModuleFunction>(symbol) : nullptr;
}

/// Calls the entry, which is a stranger's code; whatever it throws ends here.
bool Start(InitModuleFunction entry, ZULTaVoModule& module, ZULTaVoModuleManager& manager) {
  try {
    return entry(&module, &manager) == 1;
  } catch (...) {
    return false;
  }
}

}  // namespace

/// An open library and its module, which must go first, and before the modules that it needs.
struct ZULTaVoModuleManager::Library {
  struct Handle {
    explicit Handle(void* opened) : library(opened) {}
    ~Handle() { dlclose(library); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    void* library;
  };

  Library(const std::string& moduleName, void* opened) : handle(opened), module(moduleName) {}

  /// The libraries open in this process: all managers share one module each, since what a module
  /// registers is found through statics of its classes.
  static std::map<void*, std::weak_ptr<Library>>& Open() {
    static std::map<void*, std::weak_ptr<Library>> open;
    return open;
  }
  /// Held while a library is opened or closed; a module that starts opens others meanwhile.
  static std::recursive_mutex& Lock() {
    static std::recursive_mutex lock;
    return lock;
  }

  std::vector<std::shared_ptr<Library>> needs;
  Handle handle;
  ZULTaVoModule module;
};

ZULTaVoModuleManager::ZULTaVoModuleManager() = default;

ZULTaVoModuleManager::~ZULTaVoModuleManager() {
  const std::lock_guard lock(Library::Lock());
  while (!mLibraries.empty()) mLibraries.pop_back();
}

void ZULTaVoModuleManager::AddSearchDirectory(std::string_view directory) {
  if (!directory.empty()) mDirectories.emplace_back(directory);
}

void ZULTaVoModuleManager::AddFallbackDirectory(std::string_view directory) {
  if (!directory.empty()) mFallbacks.emplace_back(directory);
}

std::vector<std::string> ZULTaVoModuleManager::SearchPath() const {
  std::vector<std::string> path = mDirectories;
  const char* variable = std::getenv("ZULTAV_MODULE_PATH");
  std::string_view rest = variable != nullptr ? variable : "";
  while (!rest.empty()) {
    const std::string_view directory = rest.substr(0, rest.find(':'));
    if (!directory.empty()) path.emplace_back(directory);
    rest.remove_prefix(std::min(rest.size(), directory.size() + 1));
  }
  path.insert(path.end(), mFallbacks.begin(), mFallbacks.end());
  if (std::string own = OwnDirectory(); !own.empty()) path.push_back(std::move(own));
  return path;
}

ZULTaVoModule* ZULTaVoModuleManager::OpenModule(const ZULString& name) {
  const std::string wanted = name.Str();
  mReason.clear();
  for (const auto& library : mLibraries)
    if (library->module.GetName() == wanted) return &library->module;
  if (!IsPlainName(wanted)) {
    mReason = "\"" + wanted.substr(0, 128) +
              "\" is no module name: letters, digits, '_' and '-' are allowed";
    return nullptr;
  }
  if (std::find(mOpening.begin(), mOpening.end(), wanted) != mOpening.end()) {
    mReason = "module \"" + wanted + "\" needs itself";
    return nullptr;
  }
  mOpening.push_back(wanted);
  ZULTaVoModule* module = Load(wanted);
  mOpening.pop_back();
  return module;
}

ZULTaVoModule* ZULTaVoModuleManager::Load(const std::string& name) {
  const std::lock_guard lock(Library::Lock());
  std::string searched;
  std::string path;
  for (const std::string& directory : SearchPath()) {
    path.assign(directory).append("/lib").append(name).append(".so");
    if (access(path.c_str(), F_OK) == 0) break;
    searched.append(searched.empty() ? "" : ", ").append(directory);
    path.clear();
  }
  if (path.empty()) {
    mReason = "module \"" + name + "\" was not found; searched: " + searched;
    return nullptr;
  }
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* why = dlerror();
    mReason = "module \"" + name + "\" cannot be loaded: " + (why != nullptr ? why : path);
    return nullptr;
  }
  if (auto open = Library::Open()[handle].lock()) {
    dlclose(handle);
    return &Hold(open)->module;
  }
  auto library = std::make_shared<Library>(name, handle);
  const InitModuleFunction entry = FindEntry(handle);
  if (entry == nullptr) {
    mReason = "module \"" + name + "\" has no entry " + kEntry + ": " + path;
    return nullptr;
  }
  if (!Start(entry, library->module, *this)) {
    const std::string cause = mReason.empty() ? "" : " (" + mReason + ")";
    mReason = "module \"" + name + "\" refused to start: " + path + cause;
    return nullptr;
  }
  mReason.clear();
  for (const ZULTaVoModule* needed : library->module.GetLoadedModules())
    for (const auto& other : mLibraries)
      if (&other->module == needed) library->needs.push_back(other);
  Library::Open()[handle] = library;
  return &Hold(library)->module;
}

/// Keeps the library and what it needs open as long as this manager lives.
const std::shared_ptr<ZULTaVoModuleManager::Library>& ZULTaVoModuleManager::Hold(
    const std::shared_ptr<Library>& library) {
  for (const auto& needed : library->needs) Hold(needed);
  if (std::find(mLibraries.begin(), mLibraries.end(), library) == mLibraries.end())
    mLibraries.push_back(library);
  return library;
}

std::vector<ZULTaVoModule*> ZULTaVoModuleManager::GetModules() const {
  std::vector<ZULTaVoModule*> modules;
  for (const auto& library : mLibraries) modules.push_back(&library->module);
  return modules;
}
