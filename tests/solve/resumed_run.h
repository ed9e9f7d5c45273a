#pragma once

#include <cstdint>
#include <string>

#include "framework/base/Fnv1a.h"
#include "framework/search/ZULTavNewton.h"
#include "solve/Checkpoint.h"
#include "solve/LoadedModel.h"

/// The content of a checkpoint with the checksum that makes it a whole file.
inline std::string WithChecksum(std::string bytes) {
  const std::uint64_t hash = Fnv1a(bytes);
  for (int i = 0; i < 8; ++i) bytes += static_cast<char>(hash >> 8 * i);
  return bytes;
}

/// Reads the checkpoint and goes on a little. False, with the reason, where that is not possible.
inline bool GoesOn(const std::string& file, std::string& reason) {
  const auto checkpoint = Checkpoint::Read(file, reason);
  if (checkpoint == nullptr) return false;
  Options options;
  checkpoint->Restore(options);
  Modules modules;
  Options module;  // the file may name another one, which is nothing to try here
  if (!modules.Open(module, reason)) return false;
  const auto model = checkpoint->MakeModel(modules.All(), reason);
  if (model == nullptr) return false;
  model->Network().SetFilterLimit(1000);
  options.search.limits.nodes = 5;
  ZULTavNewton newton(model->Network(), ValuesOf(*model));
  options.search.reasoning = newton.GetReasoning();
  ZULTavSearch search(model->Network(), ValuesOf(*model), options.search);
  if (!checkpoint->RestoreSearch(search, reason)) return false;
  search.Run([](const ZULTavSolution&) { return true; });
  return true;
}
