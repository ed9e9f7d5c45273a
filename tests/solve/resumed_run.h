#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "framework/base/Fnv1a.h"
#include "solve/Checkpoint.h"
#include "solve/LoadedModel.h"

/// A checkpoint with the checksums that make its records whole: after its head there are frames of
/// checksum, number of bytes and kind, each followed by those bytes.
inline std::string WithChecksums(std::string bytes) {
  constexpr std::size_t kHead = 20, kNumber = 8, kFrame = 2 * kNumber + 1;
  for (std::size_t at = kHead; at + kFrame <= bytes.size();) {
    std::uint64_t size = 0;
    for (std::size_t i = kNumber; i-- > 0;)
      size = size << 8 | static_cast<unsigned char>(bytes[at + kNumber + i]);
    if (size > bytes.size() - at - kFrame) break;
    const std::size_t end = at + kFrame + static_cast<std::size_t>(size);
    const std::string_view content(&bytes[at + kNumber], end - at - kNumber);
    const std::uint64_t hash = zultav::Fnv1a(content);
    for (std::size_t i = 0; i < kNumber; ++i) bytes[at + i] = static_cast<char>(hash >> 8 * i);
    at = end;
  }
  return bytes;
}

/// A run that goes on from a checkpoint.
class GoingOn {
 public:
  /// Null, with the reason, where that is not possible.
  static std::unique_ptr<GoingOn> From(const std::string& file, Journal::Access access,
                                       std::string& reason) {
    std::unique_ptr<GoingOn> run(new GoingOn);
    run->mCheckpoint = Checkpoint::Open(file, access, reason);
    if (run->mCheckpoint == nullptr) return nullptr;
    Options options;
    run->mCheckpoint->Restore(options);
    Options module;  // the file may name another one, which is nothing to try here
    if (!run->mModules.Open(module, reason)) return nullptr;
    run->mModel = run->mCheckpoint->MakeModel(run->mModules.All(), reason);
    if (run->mModel == nullptr) return nullptr;
    ZULTaVoNetwork& network = run->mModel->Network();
    network.SetFilterLimit(1000);
    options.search.limits.nodes = kNodes;
    options.search.resumable = true;
    run->mSearch = std::make_unique<ZULTavSearch>(network, ValuesOf(*run->mModel), options.search);
    const bool restored =
        run->mCheckpoint->RestoreSearch(*run->mSearch, reason) &&
        run->mCheckpoint->ForEachFound(*run->mSearch, reason, [](const ZULTavSolution&) {});
    return restored ? std::move(run) : nullptr;
  }

  static constexpr int kNodes = 5;
  void Run() {
    mSearch->Run([this](const ZULTavSolution& solution) {
      mCheckpoint->Add(solution);
      return true;
    });
  }
  Checkpoint& GetCheckpoint() { return *mCheckpoint; }
  const ZULTavSearch& GetSearch() const { return *mSearch; }

 private:
  GoingOn() = default;

  Modules mModules;
  std::unique_ptr<Checkpoint> mCheckpoint;
  std::unique_ptr<ZULTavModel> mModel;
  std::unique_ptr<ZULTavSearch> mSearch;
};

/// Reads the checkpoint and goes on a little. False, with the reason, where that is not possible.
inline bool GoesOn(const std::string& file, std::string& reason) {
  const auto run = GoingOn::From(file, Journal::Access::kRead, reason);
  if (run != nullptr) run->Run();
  return run != nullptr;
}
